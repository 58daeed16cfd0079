// Measures loads and opens, and prints each ratio with its bound. Takes the options of Google Benchmark.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "Bench.h"

namespace {

using tavi_bench::Times;

constexpr double kOpenBound = 60;      // microseconds, on a machine that copies kReferenceRate
constexpr double kReferenceRate = 10;  // bytes in a nanosecond
constexpr int kOpenCallsBound = 20;

// Keeps the shortest time of each benchmark; the single results go to the file of --benchmark_out.
class KeepingReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) {
        std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
        failed = true;
      } else if (run.run_type == Run::RT_Iteration) {
        const double nanoseconds = run.real_accumulated_time * 1e9 / static_cast<double>(run.iterations);
        const auto [place, is_new] = times.emplace(run.run_name.function_name, nanoseconds);
        if (!is_new) place->second = std::min(place->second, nanoseconds);
      }
    }
  }
  Times times;
  bool failed = false;
};

double TimeOf(const Times& times, const std::string& name) {
  const auto found = times.find(name);
  return found == times.end() ? 0 : found->second;
}

bool PrintLoads(const Times& times) {
  bool all_pass = true;
  std::printf("%-38s %9s %9s %7s %7s\n", "against copying the composite once", "load ms", "copy ms", "ratio",
              "bound");
  for (const tavi_bench::LoadCase& load : tavi_bench::LoadCases()) {
    const double time = TimeOf(times, load.name);
    const double copy = TimeOf(times, tavi_bench::CopyName(load.load_bits));
    if (time == 0 || copy == 0) continue;
    const bool pass = time / copy <= load.bound;
    all_pass = all_pass && pass;
    std::printf("%-38s %9.2f %9.2f %7.2f %7.0f  %s\n", load.name.c_str(), time / 1e6, copy / 1e6, time / copy,
                load.bound, pass ? "pass" : "MISS");
  }
  return all_pass;
}

bool PrintOpen(const Times& times, int calls) {
  const double time = TimeOf(times, tavi_bench::kOpenName) / 1e3;
  const double copy = TimeOf(times, tavi_bench::CopyName(24));
  bool all_pass = true;
  if (time != 0 && copy != 0) {
    const double rate = 3.0 * tavi_bench::kSide * tavi_bench::kSide / copy;
    const double bound = kOpenBound * kReferenceRate / rate;
    all_pass = time <= bound;
    std::printf(
        "\nopen, one image: %.1f microseconds, bound %.1f (60 at 10 GB/s; this machine copies %.1f GB/s)  "
        "%s\n",
        time, bound, rate, all_pass ? "pass" : "MISS");
  }
  if (calls < 0) {
    std::puts("open, one image: system calls could not be counted here");
  } else {
    const bool pass = calls <= kOpenCallsBound;
    all_pass = all_pass && pass;
    std::printf("open, one image: %d system calls, bound %d  %s\n", calls, kOpenCallsBound,
                pass ? "pass" : "MISS");
  }
  return all_pass;
}

}  // namespace

int main(int argc, char** argv) {
  const tavi_bench::BenchFolder folder;
  // Loads and copies take turns, so that a change of the machine's pace meets both.
  std::vector<char*> arguments(argv, argv + argc);
  std::string interleaving = "--benchmark_enable_random_interleaving=true";
  std::string repetitions = "--benchmark_repetitions=15";
  std::string least_time = "--benchmark_min_time=0.03";
  arguments.insert(arguments.begin() + 1, {interleaving.data(), repetitions.data(), least_time.data()});
  auto count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  const std::wstring open_file = tavi_bench::WriteOpenFile(folder.path());
  const int calls = tavi_bench::CountOpenSystemCalls(open_file);
  tavi_bench::RegisterLoads(folder.path());
  tavi_bench::RegisterOpen(open_file);
  KeepingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const bool loads_pass = PrintLoads(reporter.times);
  const bool open_passes = PrintOpen(reporter.times, calls);
  return loads_pass && open_passes && !reporter.failed ? 0 : 1;
}
