// Bounds on effort: what takes seconds of the processor's time here is a bomb. A busy machine does not stretch them.
#ifndef TAVI_TESTS_SUPPORT_PROCESSOR_TIME_H
#define TAVI_TESTS_SUPPORT_PROCESSOR_TIME_H

#include <ctime>

namespace tavi_test {

// Measures from its making on, all threads of the process together.
class ProcessorTime {
 public:
  [[nodiscard]] double Seconds() const { return static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC; }

 private:
  std::clock_t start_ = std::clock();
};

}  // namespace tavi_test

#endif
