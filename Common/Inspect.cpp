#include "Inspect.h"

#include "NitfFile.h"

namespace tavi {

int32_t InspectFile(const wchar_t* path, FieldObserver observe, void* user) {
  NitfFile document;
  document.Observe = observe;
  document.Observer = user;
  return OpenNitfFile(document, path);
}

}  // namespace tavi
