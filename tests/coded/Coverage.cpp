#include "Coverage.h"

#include <cstdlib>
#include <fstream>

namespace tavi_test {

void RecordDecoded(const ImageSpec& image, const std::string& layout, const std::string& codec) {
  const char* path = std::getenv("TAVI_COVERAGE_RECORD");
  if (path == nullptr) return;
  std::ofstream(path, std::ios::app) << image.ic << '\t' << image.abpp << '\t' << image.bands.size() << '\t'
                                     << image.imode << '\t' << layout << '\t' << codec << '\n';
}

}  // namespace tavi_test
