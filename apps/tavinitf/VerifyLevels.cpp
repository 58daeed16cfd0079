// Display levels, each of one segment, and attachments, each to a segment below.
#include <map>

#include "Verify.h"

namespace tavinitf {
namespace {

struct Placed {
  const Segment* segment;
  const Field* level_field;
  const Field* attachment_field;
  uint64_t level;
  uint64_t attachment;
};

struct LevelNames {
  SegmentKind kind;
  const char* level;
  const char* attachment;
};
constexpr LevelNames kNames[] = {{SegmentKind::kImage, "IDLVL", "IALVL"},
                                 {SegmentKind::kGraphic, "SDLVL", "SALVL"},
                                 {SegmentKind::kLabel, "LDLVL", "LALVL"}};

std::string Words(const Segment& segment) {
  return std::string(KindName(segment.kind)) + " " + std::to_string(segment.index);
}

using ByLevel = std::map<uint64_t, const Placed*>;

std::vector<Placed> FindPlaced(const Subject& subject) {
  std::vector<Placed> placed;
  for (const Segment& segment : subject.contents.segments) {
    for (const LevelNames& names : kNames) {
      if (names.kind != segment.kind) continue;
      const auto level = TakeNumber(subject, segment, names.level);
      const auto attachment = TakeNumber(subject, segment, names.attachment);
      if (!level || !attachment) continue;
      placed.push_back(
          {&segment, segment.Find(names.level), segment.Find(names.attachment), *level, *attachment});
    }
  }
  return placed;
}

// The level's first owner counts as the parent of what is attached to it.
ByLevel VerifyUnique(const Subject& subject, const std::vector<Placed>& placed) {
  ByLevel levels;
  for (const Placed& one : placed) {
    if (one.level == 0) subject.findings.Add(*one.segment, *one.level_field, "a level of 1 to 999");
    const auto [owner, is_new] = levels.emplace(one.level, &one);
    if (!is_new) {
      subject.findings.Add(*one.segment, *one.level_field,
                           "a level of its own: " + Words(*owner->second->segment) + " has it already");
    }
  }
  return levels;
}

// Whether climbing from parent to parent comes back. Each step is to another level, so there are no more steps than
// levels.
bool Returns(const Placed& one, const ByLevel& levels) {
  uint64_t level = one.attachment;
  for (size_t steps = 0; steps <= levels.size() && level != 0; ++steps) {
    if (level == one.level) return true;
    const auto parent = levels.find(level);
    if (parent == levels.end()) return false;
    level = parent->second->attachment;
  }
  return false;
}

void VerifyAttachment(const Subject& subject, const Placed& one, const ByLevel& levels) {
  if (one.attachment == 0) return;
  const auto add = [&](const std::string& expected) {
    subject.findings.Add(*one.segment, *one.attachment_field, expected);
  };
  if (Returns(one, levels)) {
    add("000 or the level of a segment that does not hang on this one: the attachments go round in a loop");
  } else if (!levels.contains(one.attachment)) {
    add("000 or the display level of an image or a graphic: none has this one");
  } else if (one.attachment >= one.level) {
    add("a level below its own, " + one.level_field->bytes);
  }
}

}  // namespace

void VerifyLevels(const Subject& subject) {
  const std::vector<Placed> placed = FindPlaced(subject);
  const ByLevel levels = VerifyUnique(subject, placed);
  for (const Placed& one : placed) VerifyAttachment(subject, one, levels);
  for (const Segment& segment : subject.contents.segments) {
    if (segment.kind != SegmentKind::kText) continue;
    const auto attachment = TakeNumber(subject, segment, "TXTALVL");
    if (!attachment || *attachment == 0 || levels.contains(*attachment)) continue;
    subject.findings.Add(segment, *segment.Find("TXTALVL"),
                         "000 or the display level of an image or a graphic: none has this one");
  }
}

}  // namespace tavinitf
