#include "Document.h"

#include "PathNames.h"

namespace tavinitf {

Document::~Document() {
  if (handle_ != nullptr) Tavi_NITFDestroy(&handle_);
}

int32_t Document::Open(const wchar_t* path) {
  return Tavi_NITFCreate(&handle_, path);
}

int32_t Document::Save(OutputFile& output) const {
  const std::optional<std::wstring> name = WideFromUtf8(output.part());
  if (!name) {
    output.Fail("its name is not valid UTF-8");
    return ERR_FILE_WRITE;
  }
  const int32_t status = Tavi_NITFSaveFile(handle_, name->c_str());
  if (status == ERR_FILE_WRITE) output.Fail("it cannot be written in full");
  return status;
}

}  // namespace tavinitf
