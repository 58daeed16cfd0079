// Measures loads and opens, and prints each ratio with its bound. Takes the options of Google Benchmark.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "Bench.h"

namespace {

using tavi_bench::kFileCopyName;
using tavi_bench::kSaveName;
using tavi_bench::Times;

constexpr double kOpenBound = 60;      // microseconds, on a machine that copies kReferenceRate
constexpr double kReferenceRate = 10;  // bytes in a nanosecond
constexpr int kOpenCallsBound = 20;
constexpr double kSaveBound = 1.5;  // times the copy of the file
constexpr int64_t kSaveMemoryBound = int64_t{32} << 20;
constexpr double kVectorBound = 1.5;  // times the bare strokes
constexpr double kScanRateBound = 1;  // bytes in a nanosecond

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

// 0 when a part of it was not measured.
double BoundOf(const Times& times, const std::vector<tavi_bench::Term>& terms) {
  double bound = 0;
  for (const tavi_bench::Term& term : terms) {
    const double time = term.of == tavi_bench::kMilliseconds ? 1e6 : TimeOf(times, term.of);
    if (time == 0) return 0;
    bound += term.factor * time;
  }
  return bound;
}

bool PrintCoded(const Times& times, const std::vector<tavi_bench::CodedCase>& cases) {
  bool all_pass = true;
  std::printf("\n%-38s %9s %9s %7s %7s\n", "against the codec's library alone", "load ms", "floor ms",
              "ratio", "bound");
  for (const tavi_bench::CodedCase& load : cases) {
    const double time = TimeOf(times, load.name);
    const double floor = TimeOf(times, load.floor);
    const double bound = BoundOf(times, load.bound);
    if (time == 0 || floor == 0 || bound == 0) continue;
    const bool pass = time <= bound;
    all_pass = all_pass && pass;
    std::printf("%-38s %9.2f %9.2f %7.2f %7.2f  %s\n", load.name.c_str(), time / 1e6, floor / 1e6,
                time / floor, bound / floor, pass ? "pass" : "MISS");
  }
  return all_pass;
}

// The whole load counts. What finding the streams takes of it shows beside the same streams found by a mask.
bool PrintScan(const Times& times) {
  const double scanned = TimeOf(times, tavi_bench::kScanName);
  const double masked = TimeOf(times, tavi_bench::kScanMaskName);
  if (scanned == 0) return true;
  const double rate = tavi_bench::kScanBytes / scanned;
  const bool pass = rate >= kScanRateBound;
  std::printf("\n64 MiB of streams found by scan: %.2f ms, %.2f GB/s, bound %.0f GB/s  %s\n", scanned / 1e6,
              rate, kScanRateBound, pass ? "pass" : "MISS");
  if (masked != 0 && scanned > masked) {
    std::printf("the same streams found by a mask: %.2f ms; the scan alone: %.2f GB/s\n", masked / 1e6,
                tavi_bench::kScanBytes / (scanned - masked));
  }
  return pass;
}

std::string TextOf(const std::vector<tavi_bench::Term>& terms) {
  std::string text;
  for (const tavi_bench::Term& term : terms) {
    char factor[32];
    std::snprintf(factor, sizeof factor, "%g", term.factor);
    text += (text.empty() ? "" : " + ") + std::string(factor) + " * " + term.of;
  }
  return text;
}

// The results' file tells the bounds as well.
void TellBounds(const std::vector<tavi_bench::CodedCase>& coded, int calls) {
  const auto tell = [](const std::string& name, const std::vector<tavi_bench::Term>& terms) {
    benchmark::AddCustomContext("bound of " + name, TextOf(terms));
  };
  for (const tavi_bench::LoadCase& load : tavi_bench::LoadCases()) {
    tell(load.name, {{load.bound, tavi_bench::CopyName(load.load_bits)}});
  }
  for (const tavi_bench::CodedCase& load : coded) tell(load.name, load.bound);
  const double composite = 3.0 * tavi_bench::kSide * tavi_bench::kSide;
  tell(tavi_bench::kOpenName, {{kOpenBound * 1e3 * kReferenceRate / composite, tavi_bench::CopyName(24)}});
  tell(tavi_bench::kPaintVectorName, {{kVectorBound, tavi_bench::kStrokesName}});
  tell(tavi_bench::kSaveName, {{kSaveBound, tavi_bench::kFileCopyName}});
  benchmark::AddCustomContext("system calls",
                              std::to_string(calls) + " of " + std::to_string(kOpenCallsBound));
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

bool PrintVector(const Times& times) {
  const double time = TimeOf(times, tavi_bench::kPaintVectorName);
  const double floor = TimeOf(times, tavi_bench::kStrokesName);
  if (time == 0 || floor == 0) return true;
  const bool pass = time / floor <= kVectorBound;
  std::printf("\npaint, 100,000 lines: %.1f ms; bare strokes: %.1f ms; ratio %.2f, bound %.1f  %s\n",
              time / 1e6, floor / 1e6, time / floor, kVectorBound, pass ? "pass" : "MISS");
  return pass;
}

bool PrintSave(const Times& times, int64_t memory) {
  const double time = TimeOf(times, kSaveName);
  const double copy = TimeOf(times, kFileCopyName);
  bool all_pass = true;
  if (time != 0 && copy != 0) {
    all_pass = time / copy <= kSaveBound;
    std::printf("\nsave, 50 MiB: %.1f ms; copied in pieces of 1 MiB: %.1f ms; ratio %.2f, bound %.1f  %s\n",
                time / 1e6, copy / 1e6, time / copy, kSaveBound, all_pass ? "pass" : "MISS");
  }
  if (memory < 0) {
    std::puts("save, 50 MiB: memory could not be measured here");
  } else {
    const bool pass = memory <= kSaveMemoryBound;
    all_pass = all_pass && pass;
    std::printf("save, 50 MiB: %.1f MiB of memory, bound 32 MiB  %s\n",
                static_cast<double>(memory) / (1 << 20), pass ? "pass" : "MISS");
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
  const std::filesystem::path save_file = tavi_bench::WriteSaveFile(folder.path());
  const int64_t save_memory = tavi_bench::MeasureSaveMemory(save_file);
  tavi_bench::RegisterLoads(folder.path());
  tavi_bench::RegisterSave(save_file);
  tavi_bench::RegisterOpen(open_file);
  tavi_bench::RegisterVector();
  tavi_bench::CodedStreams streams;
  const std::vector<tavi_bench::CodedCase> coded = tavi_bench::WriteCodedFiles(folder.path(), &streams);
  tavi_bench::RegisterCoded(coded, streams);
  TellBounds(coded, calls);
  KeepingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const bool loads_pass = PrintLoads(reporter.times);
  const bool coded_pass = PrintCoded(reporter.times, coded);
  const bool scan_passes = PrintScan(reporter.times);
  const bool open_passes = PrintOpen(reporter.times, calls);
  const bool saves_pass = PrintSave(reporter.times, save_memory);
  const bool vectors_pass = PrintVector(reporter.times);
  const bool all_pass = loads_pass && coded_pass && scan_passes && open_passes && saves_pass && vectors_pass;
  return all_pass && !reporter.failed ? 0 : 1;
}
