// Measures every kind of work and prints each time with its floor and bound; a bound that is missed ends it with 1.
// Takes the options of Google Benchmark, and --results=FILE for the table as JSON.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "Bench.h"

namespace {

using tavi_bench::Measured;
using tavi_bench::Table;
using tavi_bench::Times;

// Keeps the shortest time of each benchmark.
class KeepingReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) {
        std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
        failed = true;
      } else if (run.run_type == Run::RT_Iteration) {
        Keep(run);
      }
    }
  }
  Times times;
  bool failed = false;

 private:
  void Keep(const Run& run) {
    const double ms = run.real_accumulated_time * 1e3 / static_cast<double>(run.iterations);
    const auto bytes = run.counters.find("bytes");
    Measured& kept = times[run.run_name.function_name];
    kept.ms = kept.ms == 0 ? ms : std::min(kept.ms, ms);
    if (bytes != run.counters.end()) kept.bytes = bytes->second.value;
  }
};

// Takes --results=FILE out of the arguments.
std::string TakeResultsPath(std::vector<std::string>* arguments) {
  const std::string option = "--results=";
  const auto found = std::find_if(arguments->begin(), arguments->end(),
                                  [&](const std::string& argument) { return argument.starts_with(option); });
  if (found == arguments->end()) return {};
  std::string path = found->substr(option.size());
  arguments->erase(found);
  return path;
}

bool StartBenchmarks(std::vector<std::string>* arguments) {
  // Kinds and floors take turns, so that a change of the machine's pace meets both.
  arguments->insert(arguments->begin() + 1, {"--benchmark_enable_random_interleaving=true",
                                             "--benchmark_repetitions=15", "--benchmark_min_time=0.03"});
  std::vector<char*> pointers;
  for (std::string& argument : *arguments) pointers.push_back(argument.data());
  auto count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  return !benchmark::ReportUnrecognizedArguments(count, pointers.data());
}

void CountThings(const std::filesystem::path& folder, Table* table) {
  constexpr int kOpenCallsBound = 20;
  constexpr int kSaveMemoryBound = 32;
  const int calls = tavi_bench::CountOpenSystemCalls(tavi_bench::WriteOpenFile(folder));
  table->counts.push_back({"open/one image", "system calls", static_cast<double>(calls), kOpenCallsBound});
  const int64_t memory = tavi_bench::MeasureSaveMemory(tavi_bench::WriteSaveFile(folder));
  table->counts.push_back({"save/one image of 50 MiB", "MiB of memory",
                           memory < 0 ? -1 : static_cast<double>(memory) / (1 << 20), kSaveMemoryBound});
}

}  // namespace

int main(int argc, char** argv) {
  const auto start = std::chrono::steady_clock::now();
  std::vector<std::string> arguments(argv, argv + argc);
  const std::string results = TakeResultsPath(&arguments);
  if (!StartBenchmarks(&arguments)) return 2;

  const tavi_bench::BenchFolder folder;
  Table table;
  CountThings(folder.path(), &table);
  tavi_bench::RegisterCopies();
  tavi_bench::RegisterLoads(folder.path(), &table);
  tavi_bench::RegisterCoded(folder.path(), &table);
  tavi_bench::RegisterOpen(folder.path(), &table);
  tavi_bench::RegisterSave(folder.path(), &table);
  tavi_bench::RegisterAppend(folder.path(), &table);
  tavi_bench::RegisterVector(&table);
  tavi_bench::RegisterSamples(&table);
  KeepingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  const bool all_hold = tavi_bench::Report(table, reporter.times, seconds.count(), results);
  return all_hold && !reporter.failed ? 0 : 1;
}
