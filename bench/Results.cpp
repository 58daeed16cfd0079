#include "Results.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "Bench.h"

namespace tavi_bench {
namespace {

using Json = nlohmann::ordered_json;

// The floors' names as bounds are told in.
std::string ShortName(const std::string& benchmark) {
  const size_t slash = benchmark.find('/');
  const std::string group = benchmark.substr(0, slash);
  if (group != "floor" && group != "load") return group;
  return benchmark.substr(slash + 1, benchmark.find(',') - slash - 1);
}

std::string TextOf(const std::vector<Term>& terms) {
  std::string text;
  for (const Term& term : terms) {
    char factor[32];
    std::snprintf(factor, sizeof factor, "%.3g", term.factor);
    text += text.empty() ? "" : " + ";
    text += term.of == kMilliseconds ? factor + std::string(" ms")
                                     : factor + std::string(" x ") + ShortName(term.of);
  }
  return text;
}

const Measured* Find(const Times& times, const std::string& name) {
  const auto found = times.find(name);
  return found == times.end() ? nullptr : &found->second;
}

// 0 when a part of it was not measured.
double BoundOf(const Times& times, const std::vector<Term>& terms) {
  double bound = 0;
  for (const Term& term : terms) {
    const Measured* const of = Find(times, term.of);
    if (term.of != kMilliseconds && of == nullptr) return 0;
    bound += term.factor * (of == nullptr ? 1 : of->ms);
  }
  return bound;
}

// What a filtered run has not measured has no line.
Json LineOf(const Row& row, const Times& times) {
  const Measured* const time = Find(times, row.kind);
  const Measured* const floor = Find(times, row.floor);
  if (time == nullptr || (floor == nullptr && !row.floor.empty())) return {};
  const double bound = BoundOf(times, row.bound);
  Json line{{"kind", row.kind}, {"ms", time->ms}};
  if (time->bytes > 0) line["mb_per_s"] = time->bytes / time->ms / 1e3;
  if (floor != nullptr) {
    line["floor"] = ShortName(row.floor);
    line["floor_ms"] = floor->ms;
    line["ratio"] = time->ms / floor->ms;
    if (bound > 0) line["bound_ratio"] = bound / floor->ms;
  }
  if (bound > 0) {
    line["bound"] = TextOf(row.bound);
    line["bound_ms"] = bound;
    line["holds"] = time->ms <= bound;
  }
  return line;
}

Json LineOf(const Count& count) {
  Json line{{"kind", count.kind}, {"value", count.value}, {"unit", count.unit}, {"bound", count.bound}};
  if (count.value >= 0) line["holds"] = count.value <= count.bound;
  return line;
}

std::string Number(const Json& line, const char* key, int digits) {
  if (!line.contains(key)) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, line[key].get<double>());
  return text;
}

const char* Verdict(const Json& line) {
  if (!line.contains("holds")) return "";
  return line["holds"].get<bool>() ? "holds" : "MISSED";
}

void Print(const Json& rows, const Json& counts) {
  std::printf("%-42s %9s %9s %9s %7s %7s  %-7s %s\n", "kind", "ms", "MB/s", "floor ms", "ratio", "bound", "",
              "");
  for (const Json& line : rows) {
    const std::string told = line.value("bound", "");
    std::printf("%-42s %9s %9s %9s %7s %7s  %-7s %s\n", line["kind"].get<std::string>().c_str(),
                Number(line, "ms", 3).c_str(), Number(line, "mb_per_s", 0).c_str(),
                Number(line, "floor_ms", 3).c_str(), Number(line, "ratio", 2).c_str(),
                Number(line, "bound_ratio", 2).c_str(), Verdict(line), told.c_str());
  }
  for (const Json& line : counts) {
    std::printf("%-42s %9s %s, bound %g  %s\n", line["kind"].get<std::string>().c_str(),
                Number(line, "value", 1).c_str(), line["unit"].get<std::string>().c_str(),
                line["bound"].get<double>(), Verdict(line));
  }
}

std::string Processor() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unnamed processor";
}

std::string Today() {
  const std::time_t now = std::time(nullptr);
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", std::localtime(&now));
  return text;
}

Json Machine(const Times& times) {
  return {{"cores", std::thread::hardware_concurrency()},
          {"processor", Processor()},
          {"copy_gb_per_s", CopyRate(times) / 1e6},
          {"compiler", TAVI_BENCH_COMPILER},
          {"date", Today()}};
}

}  // namespace

double CopyRate(const Times& times) {
  const Measured* const copy = Find(times, CopyName(24));
  return copy == nullptr ? 0 : copy->bytes / copy->ms;
}

bool Report(const Table& table, const Times& times, double seconds, const std::string& path) {
  Json rows = Json::array();
  Json counts = Json::array();
  for (const Row& row : table.rows) {
    if (Json line = LineOf(row, times); !line.is_null()) rows.push_back(std::move(line));
  }
  for (const Count& count : table.counts) counts.push_back(LineOf(count));
  Print(rows, counts);
  std::vector<std::string> missed;
  for (const Json* lines : {&rows, &counts}) {
    for (const Json& line : *lines) {
      if (!line.value("holds", true)) missed.push_back(line["kind"]);
    }
  }
  std::printf("%.0f s; memory is copied at %.1f GB/s\n", seconds, CopyRate(times) / 1e6);
  for (const std::string& kind : missed) std::printf("bound missed: %s\n", kind.c_str());
  if (!path.empty()) {
    const Json all{{"machine", Machine(times)}, {"seconds", seconds}, {"rows", rows}, {"counts", counts}};
    std::ofstream(path) << all.dump(1) << '\n';
  }
  return missed.empty();
}

}  // namespace tavi_bench
