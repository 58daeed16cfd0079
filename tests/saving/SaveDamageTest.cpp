// Damaged files: those that still open are saved as predicted, or refused as predicted, whatever their fields say.
#include <algorithm>
#include <random>

#include "RichFiles.h"
#include "SavingTest.h"
#include "VqBytes.h"

namespace saving {
namespace {

using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;

ImageSpec Quantised(const char* ic) {
  const VqBytes stream{.image_rows = 2,
                       .codes_per_row = 2,
                       .code_bits = 12,
                       .tables = 2,
                       .entries = 4,
                       .line = 2,
                       .codes = Bytes(24, 0x5A)};
  ImageSpec image = GreyImage(4, 4);
  image.Blocks(2, 2, 4, 4);
  image.ic = ic;
  image.comrat = "00.0";
  image.pixels = stream.Build();
  if (image.HasMaskTable()) image.mask.block_offsets = {0, 1, 2, 3};
  return image;
}

NtfBuilder Mixed() {
  NtfBuilder file{Quantised("C4"), Quantised("M4"), GreyImage(3, 2)};
  file.graphics.resize(1);
  file.graphics[0].data = {'c', 'g', 'm'};
  file.texts.resize(2);
  file.texts[0].data = {'t', 'e', 'x', 't'};
  return file;
}

class SaveDamage : public SavingTest, public ::testing::WithParamInterface<bool> {};

TEST_P(SaveDamage, IsSavedAsPredictedOrRefused) {
  const Bytes source = (GetParam() ? tavi::faults::FileOfEverything() : Mixed()).Build().bytes;
  std::mt19937 generator(GetParam() ? 1 : 2);
  const auto random = [&generator] { return static_cast<uint32_t>(generator()); };
  const std::string digits = "0123456789- \0";
  size_t saved = 0;
  size_t refused = 0;
  for (int round = 0; round < 2000; ++round) {
    Bytes damaged = source;
    for (uint32_t i = random() % 3 + 1; i != 0; --i) {
      uint8_t& byte = damaged[random() % damaged.size()];
      byte =
          static_cast<uint8_t>(random() % 4 == 0 ? random() : static_cast<uint32_t>(digits[random() % 12]));
    }
    if (random() % 8 == 0) damaged.resize(damaged.size() - random() % (damaged.size() / 2));
    WriteFile(SourcePath(), damaged);
    Document document(SourcePath());
    if (document.open != SUCCESS) continue;
    SCOPED_TRACE(round);
    const Prediction predicted = PredictSave(damaged);
    std::filesystem::remove(OutputPath());
    ASSERT_EQ(document.Save(OutputPath()), predicted.status);
    Bytes found = ReadFile(OutputPath());
    if (predicted.status != SUCCESS) {
      ++refused;
      ASSERT_GE(found.size(), predicted.bytes.size());
      found.resize(predicted.bytes.size());
    }
    ++saved;
    ASSERT_EQ(FirstDifference(predicted.bytes, found), "");
  }
  EXPECT_GT(saved, 200U);
  EXPECT_GT(refused, 0U);
}

INSTANTIATE_TEST_SUITE_P(Files, SaveDamage, ::testing::Bool());

}  // namespace
}  // namespace saving
