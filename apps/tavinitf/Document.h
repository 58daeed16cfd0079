// A document of the library that is open as long as its owner lives.
#pragma once

#include <cstdint>
#include <string>

#include "OutputFile.h"
#include "TaviNitf.h"

namespace tavinitf {

class Document {
 public:
  Document() = default;
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  // The status of Tavi_NITFCreate; an empty document for a null path.
  int32_t Open(const wchar_t* path);
  [[nodiscard]] NitfHandle handle() const { return handle_; }
  // Writes the document under the output's temporary name. A failure that is the output's stands there as well.
  int32_t Save(OutputFile& output) const;

 private:
  NitfHandle handle_ = nullptr;
};

}  // namespace tavinitf
