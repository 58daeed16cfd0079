// The handle operations.
#include <new>

#include "NitfFile.h"
#include "SaveNitf.h"
#include "TaviNitf.h"

namespace tavi {

TAVI_UNIT(L"Common/Tavintf")

namespace {

constexpr int32_t kTrackedObject = 4;

void ReleaseDocument(NitfFile* document) {
  HostTrackRemove(kTrackedObject, document, Here().line, Here().unit);
  delete document;
}

int32_t OpenOrMake(NitfFile& document, const wchar_t* path) {
  if (path == nullptr) {
    MakeEmptyDocument(document);
    return SUCCESS;
  }
  return _waccess(path, 0) == 0 ? OpenNitfFile(document, path) : ERR_FILE_NOT_FOUND;
}

}  // namespace

}  // namespace tavi

int32_t Tavi_NITFCreate(NitfHandle* out, const wchar_t* path) {
  auto* document = new (std::nothrow) NitfFile;
  if (document != nullptr) HostTrackAdd(tavi::kTrackedObject, document, tavi::Here().line, tavi::Here().unit);
  if (out == nullptr) return ERR_NO_MEMORY;
  *out = document;
  if (document == nullptr) return ERR_NO_MEMORY;
  const int32_t status = tavi::OpenOrMake(*document, path);
  if (status != SUCCESS) {
    tavi::ReleaseDocument(document);
    *out = nullptr;
  }
  return status;
}

int32_t Tavi_NITFDestroy(NitfHandle* handle) {
  if (handle == nullptr) return ERR_NULL_ARGUMENT;
  if (*handle == nullptr) return ERR_NULL_HANDLE;
  tavi::ReleaseDocument(*handle);
  *handle = nullptr;
  return SUCCESS;
}

int32_t Tavi_NITFGetStatus(NitfHandle handle) {
  if (handle == nullptr) return ERR_NULL_HANDLE;
  const bool empty = handle->ImageCount + handle->GraphicCount + handle->LabelCount + handle->TextCount == 0;
  return (empty ? TAVI_DOCUMENT_EMPTY : 0) | (handle->HeaderValid != 0 ? TAVI_DOCUMENT_VALID : 0);
}

int32_t Tavi_NITFSaveFile(NitfHandle handle, const wchar_t* path) {
  return handle != nullptr ? tavi::SaveDocument(*handle, path) : ERR_NULL_HANDLE;
}
