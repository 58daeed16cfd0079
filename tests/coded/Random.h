// Numbers that are the same at every run.
#ifndef TAVI_TESTS_CODED_RANDOM_H
#define TAVI_TESTS_CODED_RANDOM_H

#include <cstdint>
#include <random>

namespace tavi_test {

class Random {
 public:
  explicit Random(uint32_t seed) : engine_(seed) {}
  uint32_t Below(uint32_t limit) { return static_cast<uint32_t>(engine_() % limit); }
  uint8_t Byte() { return static_cast<uint8_t>(Below(256)); }

 private:
  std::mt19937 engine_;
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_CODED_RANDOM_H
