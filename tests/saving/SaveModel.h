// What a saved file must be, byte by byte, told from the bytes of its source. Written from the format's own layout
// and the documented rules of saving: it shares no code and no table with the library under test.
#ifndef TAVI_TESTS_SAVING_SAVE_MODEL_H
#define TAVI_TESTS_SAVING_SAVE_MODEL_H

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "NtfBuilder.h"

namespace saving {

using tavi_test::Bytes;

struct Prediction {
  int32_t status = 1;           // what the save returns
  Bytes bytes;                  // the file; after a failure at least these bytes are in it
  std::set<std::string> rules;  // the fields that differ from the source's, and "data" where data do
};

// The source opens, has no streaming file header and is saved without an edit.
Prediction PredictSave(const Bytes& source, tavi_test::Layout layout = tavi_test::Layout::kNitf21);

// The first difference, with a few bytes of both around it; empty when there is none.
std::string FirstDifference(const Bytes& expected, const Bytes& found);

}  // namespace saving

#endif  // TAVI_TESTS_SAVING_SAVE_MODEL_H
