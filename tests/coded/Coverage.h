// A record of what has been shown to decode, for docs/coverage.md: one line for each kind of image, written
// to the file that TAVI_COVERAGE_RECORD names.
#ifndef TAVI_TESTS_CODED_COVERAGE_H
#define TAVI_TESTS_CODED_COVERAGE_H

#include <string>

#include "NtfBuilder.h"

namespace tavi_test {

// `layout`: how the blocks stand in the data; `codec`: what coded them.
void RecordDecoded(const ImageSpec& image, const std::string& layout, const std::string& codec);

}  // namespace tavi_test

#endif  // TAVI_TESTS_CODED_COVERAGE_H
