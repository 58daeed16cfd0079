// The table of a run: what was measured, against which floor, within which bound.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tavi_bench {

// A benchmark's shortest time, in milliseconds, and the bytes that one iteration deals with.
struct Measured {
  double ms = 0;
  double bytes = 0;
};
using Times = std::map<std::string, Measured>;

// A time must not exceed a sum of other times.
struct Term {
  double factor;
  std::string of;  // a benchmark, or kMilliseconds
};
inline constexpr const char* kMilliseconds = "ms";

struct Row {
  std::string kind;   // the benchmark's name: "load/…", "open/…", "save/…", "append/…", "paint/…"
  std::string floor;  // the benchmark that the ratio is of; may be empty
  std::vector<Term> bound;  // empty: for comparison
};

// What is counted, not timed.
struct Count {
  std::string kind;
  std::string unit;
  double value;  // below 0: could not be counted here
  double bound;
};

struct Table {
  std::vector<Row> rows;
  std::vector<Count> counts;
};

// Prints the table, and writes it as JSON to `path` unless that is empty. Names what misses its bound. False then.
bool Report(const Table& table, const Times& times, double seconds, const std::string& path);

// Bytes in a millisecond, as copying a composite of 24 bits goes.
double CopyRate(const Times& times);

}  // namespace tavi_bench
