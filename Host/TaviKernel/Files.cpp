#include <memory>
#include <new>
#include <string>

#include "TaviHost.h"
#include "TaviKernel/FileTable.h"
#include "TaviKernel/OpenFile.h"
#include "TaviKernel/Tracking.h"
#include "TaviKernel/WideText.h"

namespace tavi::host {
namespace {

constexpr uint32_t kReadFlags = 0x8000;
constexpr uint32_t kCreateFlags = 0x8302;

int64_t Open(const wchar_t* name, uint32_t flags) {
  if (name == nullptr || (flags != kReadFlags && flags != kCreateFlags)) return -1;
  std::string path;
  if (!ToUtf8(name, &path)) return -1;
  std::shared_ptr<OpenFile> file =
      OpenFile::Open(path.c_str(), flags == kReadFlags ? FileAccess::kRead : FileAccess::kCreate);
  if (file == nullptr) return -1;
  const OpenFile* const object = file.get();
  NoteMade(LiveKind::kFile, object, {});
  const int64_t handle = RegisterFile(std::move(file));
  if (handle < 0) NoteGone(LiveKind::kFile, object);
  return handle;
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

int64_t HostFileOpen(const wchar_t* name, uint32_t flags, uint32_t) {
  try {
    return Open(name, flags);
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

void HostFileClose(int64_t file) {
  const std::shared_ptr<OpenFile> closed = UnregisterFile(file);
  if (closed != nullptr) NoteGone(LiveKind::kFile, closed.get());
}

uint64_t HostFileRead(int64_t file, void* buffer, uint64_t bytes) {
  const std::shared_ptr<OpenFile> found = FindFile(file);
  return found != nullptr ? found->Read(static_cast<uint8_t*>(buffer), bytes) : 0;
}

uint64_t HostFileWrite(int64_t file, const void* buffer, uint64_t bytes) {
  const std::shared_ptr<OpenFile> found = FindFile(file);
  return found != nullptr ? found->Write(static_cast<const uint8_t*>(buffer), bytes) : 0;
}

uint64_t HostFileWriteHuge(int64_t file, const void* buffer, uint64_t bytes) {
  const std::shared_ptr<OpenFile> found = FindFile(file);
  return found != nullptr ? found->Write(static_cast<const uint8_t*>(buffer), bytes) : 0;
}

int64_t HostFileSeek(int64_t file, int64_t offset, int32_t origin) {
  const std::shared_ptr<OpenFile> found = FindFile(file);
  return found != nullptr ? found->Seek(offset, origin) : -1;
}
