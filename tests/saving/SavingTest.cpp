#include "SavingTest.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace saving {

Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("no file " + path.string());
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::filesystem::path& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
}

Picture Render(NitfHandle document) {
  HostBitmap bitmap;
  HostInitBitmap(&bitmap, sizeof bitmap, 0, 0, 0);
  Picture picture;
  picture.status = Tavi_NtfRenderBitmap(&bitmap, document);
  if ((bitmap.flags & 1) == 0) return picture;
  picture.width = bitmap.width;
  picture.height = bitmap.height;
  picture.rows.resize(size_t{bitmap.bytes_per_line} * bitmap.height);
  HostAccessBitmap(&bitmap);
  for (uint32_t row = 0; row < bitmap.height; ++row) {
    HostGetBitmapRow(&bitmap, &picture.rows[size_t{row} * bitmap.bytes_per_line], row, bitmap.bytes_per_line);
  }
  HostReleaseBitmap(&bitmap);
  HostFreeBitmap(&bitmap);
  return picture;
}

Bytes SavingTest::Saved(const tavi_test::BuiltFile& file, int32_t* status) const {
  WriteFile(SourcePath(), file.bytes);
  Document document(SourcePath());
  EXPECT_EQ(document.open, SUCCESS);
  if (document.handle == nullptr) return {};
  const int32_t saved = document.Save(OutputPath());
  if (status != nullptr) {
    *status = saved;
  } else {
    EXPECT_EQ(saved, SUCCESS);
  }
  return ReadFile(OutputPath());
}

void SavingTest::ExpectAsPredicted(const Bytes& source) const {
  WriteFile(SourcePath(), source);
  Document document(SourcePath());
  ASSERT_EQ(document.open, SUCCESS);
  const Prediction predicted = PredictSave(source);
  ASSERT_EQ(document.Save(OutputPath()), predicted.status);
  Bytes saved = ReadFile(OutputPath());
  if (predicted.status != SUCCESS) {
    ASSERT_GE(saved.size(), predicted.bytes.size());
    saved.resize(predicted.bytes.size());
  }
  ASSERT_EQ(FirstDifference(predicted.bytes, saved), "");
  // The document is as it was.
  ASSERT_EQ(document.Save(OutputPath()), predicted.status);
  saved = ReadFile(OutputPath());
  saved.resize(std::max(predicted.bytes.size(), predicted.status == SUCCESS ? saved.size() : 0));
  EXPECT_EQ(FirstDifference(predicted.bytes, saved), "") << "second save";
}

}  // namespace saving
