// Real metafiles: what their lists of elements say is what the drawing holds; and changed octets never do harm.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>

#include "CgmTest.h"

namespace tavi::test {
namespace {

namespace fs = std::filesystem;

class CgmSamples : public CgmTest {
 protected:
  void SetUp() override {
    CgmTest::SetUp();
    const char* const folder = std::getenv("TAVI_SAMPLES");
    folder_ = fs::path(folder != nullptr ? folder : TAVI_DEFAULT_SAMPLES) / "cgm";
    if (!fs::exists(folder_)) GTEST_SKIP() << "no samples in " << folder_;
    for (const auto& entry : fs::directory_iterator(folder_)) {
      if (entry.path().extension() == ".cgm") paths_.push_back(entry.path());
    }
    std::sort(paths_.begin(), paths_.end());
  }

  static Octets Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Octets(std::istreambuf_iterator<char>(file), {});
  }

  std::vector<fs::path> paths_;
  fs::path folder_;
};

// Counts the elements of the first picture, without any code of the reader. Figures count as one, whatever they hold.
std::map<int, size_t> Count(const Octets& data) {
  std::map<int, size_t> counts;
  size_t at = 0;
  bool in_figure = false;
  bool in_body = false;
  const auto word = [&] {
    const int value = at + 2 <= data.size() ? data[at] << 8 | data[at + 1] : 0;
    at += 2;
    return value;
  };
  while (at + 2 <= data.size()) {
    const int head = word();
    size_t length = static_cast<size_t>(head & 31);
    size_t total = length;
    if (length == 31) {
      int part = 0;
      total = 0;
      do {
        part = word();
        total += static_cast<size_t>(part & 0x7FFF);
        at += static_cast<size_t>(part & 0x7FFF);
      } while ((part & 0x8000) != 0);
      length = 0;
    }
    const size_t list = at;
    at += length + (at + length) % 2;
    const int group = head >> 12;
    const int id = head >> 5 & 127;
    if (group == 0 && (id == 2 || id == 5)) break;
    if (group == 0 && id == 4) in_body = true;
    if (group == 0 && id == 8) in_figure = true;
    if (group == 0 && id == 9) in_figure = false;
    if (group == 0 && id == 9) ++counts[100];
    // Strings of nothing draw nothing.
    const bool blank = group == 4 && id == 4 && total < 31 && data[list + total - 1] == 0 && total == 7;
    if (group == 4 && in_body && !in_figure && !blank) ++counts[id];
  }
  return counts;
}

template <class Shape>
size_t CountOf(const Loaded& loaded) {
  size_t count = 0;
  for (const vec::Object& object : loaded.drawing().objects)
    count += std::holds_alternative<Shape>(object.shape) ? 1U : 0U;
  return count;
}

TEST_F(CgmSamples, EveryElementIsAnObject) {
  ASSERT_FALSE(paths_.empty());
  for (const fs::path& path : paths_) {
    const Octets data = Read(path);
    const Loaded loaded(data);
    const std::string name = path.filename().string();
    if (name.starts_with("bad_")) {
      EXPECT_EQ(loaded.status(), ERR_FILE_FORMAT) << name;
      continue;
    }
    ASSERT_EQ(loaded.status(), SUCCESS) << name;
    std::map<int, size_t> counts = Count(data);
    EXPECT_EQ(CountOf<vec::Polyline>(loaded), counts[1] + counts[24] + counts[25]) << name;
    EXPECT_EQ(CountOf<vec::Segments>(loaded), counts[2]) << name;
    EXPECT_EQ(CountOf<vec::Markers>(loaded), counts[3]) << name;
    EXPECT_EQ(CountOf<vec::Polygon>(loaded), counts[7] + counts[8]) << name;
    EXPECT_EQ(CountOf<vec::CellArray>(loaded), counts[9]) << name;
    EXPECT_EQ(CountOf<vec::Rectangle>(loaded), counts[11]) << name;
    EXPECT_EQ(CountOf<vec::Ellipse>(loaded), counts[12] + counts[17]) << name;
    EXPECT_EQ(CountOf<vec::Arc>(loaded),
              counts[13] + counts[14] + counts[15] + counts[16] + counts[18] + counts[19] + counts[20])
        << name;
    EXPECT_EQ(CountOf<vec::Figure>(loaded), counts[26] + counts[100]) << name;
    EXPECT_LE(CountOf<vec::Text>(loaded), counts[4] + counts[5]) << name;
    EXPECT_GE(CountOf<vec::Text>(loaded) * 10, (counts[4] + counts[5]) * 8)
        << name << ": few strings are blank";
  }
}

TEST_F(CgmSamples, AnnotationsHaveOnePixelToAUnit) {
  const Loaded loaded(Read(folder_ / "anno_21.cgm"));
  ASSERT_EQ(loaded.count(), 2U);
  EXPECT_EQ(loaded.drawing().nominal_width, 1);
  const auto& box = loaded.As<vec::Rectangle>();
  EXPECT_LT(box.corner.y, 0) << "rows run downward";
  EXPECT_GT(box.corner.x, 0);
}

// Deterministic changes: octets replaced, cut out, doubled.
Octets Changed(Octets data, std::mt19937& random) {
  const auto below = [&random](size_t n) { return static_cast<size_t>(random() % std::max<size_t>(n, 1)); };
  const size_t changes = 1 + below(6);
  for (size_t i = 0; i < changes && !data.empty(); ++i) {
    const size_t at = below(data.size());
    switch (below(5)) {
      case 0:
        data[at] = static_cast<uint8_t>(random());
        break;
      case 1:
        data[at] = static_cast<uint8_t>(data[at] ^ 1U << below(8));
        break;
      case 2:
        data.erase(data.begin() + static_cast<ptrdiff_t>(at),
                   data.begin() + static_cast<ptrdiff_t>(at + below(std::min<size_t>(40, data.size() - at))));
        break;
      case 3:
        data.insert(data.begin() + static_cast<ptrdiff_t>(at), 2 * below(8), static_cast<uint8_t>(random()));
        break;
      default:
        data[at] = below(2) == 0 ? uint8_t{0xFF} : uint8_t{0};
        break;
    }
  }
  if (below(10) == 0) data.resize(below(data.size()));
  return data;
}

TEST_F(CgmSamples, ChangedOctetsDoNoHarm) {
  std::vector<Octets> samples;
  for (const fs::path& path : paths_) {
    Octets data = Read(path);
    if (data.size() < 64'000) samples.push_back(std::move(data));
  }
  ASSERT_FALSE(samples.empty());
  std::mt19937 random(20'000);
  constexpr size_t kChanges = 20'000;
  size_t drawn = 0;
  for (size_t i = 0; i < kChanges; ++i) {
    const Octets data = Changed(samples[i % samples.size()], random);
    const Loaded loaded(data);
    const bool known =
        loaded.status() == SUCCESS || loaded.status() == ERR_FILE_FORMAT || loaded.status() == ERR_NO_MEMORY;
    ASSERT_TRUE(known) << loaded.status() << " at " << i;
    drawn += loaded.count() > 0 ? 1U : 0U;
  }
  EXPECT_GT(drawn, kChanges / 2) << "most changes leave a picture";
}

}  // namespace
}  // namespace tavi::test
