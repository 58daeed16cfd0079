// The exports that add segments and exchange drawings: each tests its handle and hands on.
#include "Append.h"
#include "TaviNitf.h"

int32_t Tavi_NITFAppendImageSegment(NitfHandle handle, HostBitmap* bitmap, int32_t format, int32_t bits,
                                    int32_t quality_factor) {
  if (handle == nullptr) return ERR_NULL_HANDLE;
  return tavi::AppendImageSegment(*handle, bitmap, format, bits, quality_factor);
}

int32_t Tavi_NITFAppendGraphicSegment(NitfHandle handle, HostVector* vector, const HostRect* rectangle) {
  if (handle == nullptr || rectangle == nullptr) return ERR_NULL_HANDLE;
  return tavi::AppendGraphicSegment(*handle, vector, *rectangle);
}

int32_t Tavi_NITFAppendTextSegment(NitfHandle handle, const wchar_t* path) {
  return handle != nullptr ? tavi::AppendTextSegment(*handle, path) : ERR_NULL_HANDLE;
}

int32_t Tavi_NITFSetVectorHandle(NitfHandle handle, uint32_t index, HostVector* vector) {
  return handle != nullptr ? tavi::SetVectorHandle(*handle, index, vector) : ERR_NULL_HANDLE;
}

HostVector* Tavi_NITFGetVectorHandle(NitfHandle handle, uint32_t index) {
  return handle != nullptr ? tavi::GetVectorHandle(*handle, index) : nullptr;
}
