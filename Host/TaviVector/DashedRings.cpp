#include "TaviVector/DashedRings.h"

#include <algorithm>

namespace tavi::host::vec {
namespace {

double PeriodOf(std::span<const double> dashes) {
  double period = 0;
  for (const double dash : dashes) period += dash;
  return dashes.size() % 2 == 0 ? period : 2 * period;
}

// Cuts off the first part of the line, which is longer than that.
std::vector<Point> CutHead(std::vector<Point>& line, double length) {
  std::vector<Point> head{line[0]};
  size_t at = 0;
  double step = Length(line[1] - line[0]);
  while (at + 2 < line.size() && step <= length) {
    length -= step;
    head.push_back(line[++at]);
    step = Length(line[at + 1] - line[at]);
  }
  const Point cut = line[at] + (step > 0 ? std::min(length / step, 1.0) : 0) * (line[at + 1] - line[at]);
  head.push_back(cut);
  line.erase(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(at));
  line[0] = cut;
  return head;
}

}  // namespace

DashPlace PlaceIn(std::span<const double> dashes, double along) {
  along = std::fmod(along, PeriodOf(dashes));
  size_t at = 0;
  while (along >= dashes[at % dashes.size()]) along -= dashes[at++ % dashes.size()];
  return {at % 2 == 0, along, dashes[at % dashes.size()] - along};
}

std::optional<SplitRing> SplitDashedRing(std::span<const Point> ring, std::span<const double> dashes) {
  const double period = PeriodOf(dashes);
  double total = 0;
  double along = 0;
  for (size_t i = 0; i < ring.size(); ++i) {
    const double step = Length(ring[i + 1 < ring.size() ? i + 1 : 0] - ring[i]);
    total += step;
    along = std::fmod(along + step, period);
  }
  const DashPlace last = PlaceIn(dashes, along);
  if (!last.drawn || !(total > last.from_start + dashes[0])) return std::nullopt;
  SplitRing split;
  split.along = dashes[0];
  split.rest.assign(ring.begin(), ring.end());
  split.rest.push_back(ring[0]);
  const std::vector<Point> first = CutHead(split.rest, dashes[0]);
  std::reverse(split.rest.begin(), split.rest.end());
  split.seam = CutHead(split.rest, last.from_start);
  std::reverse(split.rest.begin(), split.rest.end());
  std::reverse(split.seam.begin(), split.seam.end());
  split.seam.insert(split.seam.end(), first.begin() + 1, first.end());
  return split;
}

}  // namespace tavi::host::vec
