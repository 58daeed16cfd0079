// Everything that an application can read of a document, one call after another.
#pragma once

#include <cstdint>

#include "RecordsTest.h"

namespace tavi::records {

// How reading all of a document went.
struct Reading {
  int32_t worst = SUCCESS;  // the least result of a getter
  uint32_t records = 0;     // getters that were run
};

// Runs every getter on every index and on the one beyond, fetches every text of which the size is credible,
// and frees each record twice. Takes no memory of its own.
Reading ReadAll(NitfHandle handle);

// A file with two or more segments of every kind, extended data in all of them, and an image with comments,
// masks and a pad code. The last header in it is a data extension's.
tavi_test::NtfBuilder FileOfAllRecords();

}  // namespace tavi::records
