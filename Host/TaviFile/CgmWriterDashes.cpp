#include "TaviFile/CgmWriterDashes.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>
#include <variant>

#include "TaviFile/CgmLimits.h"

namespace tavi::host::cgm {
namespace {

using namespace vec;

constexpr size_t kMostLengths = kDashLengths;  // as many as are drawn
constexpr size_t kMostTypes = INT16_MAX;

// How often a cycle is repeated in its definition, for the whole to come as near as can be to whole units: an error in
// the cycle adds up along the line.
size_t TimesToWhole(double period, size_t most) {
  constexpr double kExact = 1e-6;
  size_t best = 1;
  double least = 2;
  for (size_t times = 1; times <= most && least > kExact; ++times) {
    const double length = static_cast<double>(times) * period;
    const double error = std::abs(length - std::floor(length + 0.5)) / length;
    if (error >= least) continue;
    least = error;
    best = times;
  }
  return best;
}

// Whole lengths count as they are, others in parts as small as an integer can count.
double PartsOfUnit(std::span<const double> lengths, double unit) {
  constexpr double kMost = INT16_MAX;
  const double longest = *std::max_element(lengths.begin(), lengths.end());
  const auto is_whole = [unit](double length) { return length / unit == std::floor(length / unit); };
  const bool whole = std::all_of(lengths.begin(), lengths.end(), is_whole);
  return whole && longest <= kMost * unit ? 1 / unit : kMost / longest;
}

}  // namespace

uint32_t StrokeOf(const Shape& shape) {
  return std::visit(
      [](const auto& s) {
        uint32_t stroke = kNone;
        if constexpr (requires { s.style.edge; }) stroke = s.style.edge;
        if constexpr (requires { s.stroke; }) stroke = s.stroke != kNone ? s.stroke : stroke;
        return stroke;
      },
      shape);
}

std::optional<DashTypes::Cycle> DashTypes::CycleOf(const Stroke& stroke) const {
  if (stroke.type != LineType::kCustom || stroke.dashes.empty()) return std::nullopt;
  const size_t count = std::min(stroke.dashes.size(), kMostLengths);
  const std::span<const double> once(stroke.dashes.data(), count);
  if (std::any_of(once.begin(), once.end(), [](double length) { return !(length >= 0); }))
    return std::nullopt;
  const double period = std::accumulate(once.begin(), once.end(), 0.0);
  if (!(period > 0 && period <= longest_)) return std::nullopt;
  // A list of odd length runs through twice for readers: it must stand there once.
  const size_t most = count % 2 == 0 ? kMostLengths / count : 1;
  const double fitting = std::min(longest_ / period, static_cast<double>(most));
  const size_t times = TimesToWhole(period, static_cast<size_t>(fitting));
  Cycle cycle{ToVdc(static_cast<double>(times) * period), {}};
  if (cycle.length <= 0) return std::nullopt;
  const double factor = PartsOfUnit(once, unit_);
  for (size_t i = 0; i < times; ++i) {
    for (const double length : once) cycle.parts.push_back(ToVdc(length * factor));
  }
  return cycle;
}

void DashTypes::Add(const Stroke& stroke) {
  if (types_.size() >= kMostTypes) return;
  std::optional<Cycle> cycle = CycleOf(stroke);
  if (cycle) types_.try_emplace(std::move(*cycle), -static_cast<int64_t>(types_.size()) - 1);
}

std::optional<int64_t> DashTypes::TypeOf(const Stroke& stroke) const {
  const std::optional<Cycle> cycle = CycleOf(stroke);
  if (!cycle) return std::nullopt;
  const auto found = types_.find(*cycle);
  return found != types_.end() ? std::optional(found->second) : std::nullopt;
}

void DashTypes::Write(ElementWriter* out) const {
  for (const auto& [cycle, type] : types_) {
    out->Begin(code::kLineTypeDefinition);
    out->Integer(type);
    out->Vdc(cycle.length);
    for (const int64_t part : cycle.parts) out->Integer(part);
    out->End();
  }
}

}  // namespace tavi::host::cgm
