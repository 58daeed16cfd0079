// What the tests of drawing share: a document over a built file of either layout, a canvas, and a recorded host.
#ifndef TAVI_TESTS_GRAPHICS_GRAPHICS_TEST_H
#define TAVI_TESTS_GRAPHICS_GRAPHICS_TEST_H

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "DisplayList.h"
#include "GraphicBitmap.h"
#include "GraphicDrawing.h"
#include "GraphicObjects.h"
#include "LabelDrawing.h"
#include "RecordingHost.h"
#include "UnitTest.h"

namespace graphics {

using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::GraphicSpec;
using tavi_test::GreyImage;
using tavi_test::LabelSpec;
using tavi_test::NtfBuilder;
using Calls = std::vector<std::string>;

// A 24-bit picture of one colour, and the context that draws into it.
class Canvas {
 public:
  explicit Canvas(uint32_t width = 40, uint32_t height = 40, uint32_t color = 0xFFFFFF) {
    EXPECT_EQ(
        HostCreateBitmap(bitmap_.get(), sizeof(HostBitmap), 1, width, height, 24, 1, nullptr, 1, nullptr, 0),
        SUCCESS);
    HostFillBitmap(bitmap_.get(), color);
    context_.emplace(bitmap_.get());
  }
  HostDrawingContext dc() { return context_->get(); }
  // As 0x00BBGGRR.
  uint32_t At(uint32_t x, uint32_t y) {
    std::vector<uint8_t> row(bitmap_->bytes_per_line);
    HostGetBitmapRow(bitmap_.get(), row.data(), y, row.size());
    return static_cast<uint32_t>(row[3 * x] << 16 | row[3 * x + 1] << 8 | row[3 * x + 2]);
  }

 private:
  tavi::OwnedBitmap bitmap_;
  std::optional<tavi::BitmapContext> context_;
};

class GraphicsTest : public unit::UnitTest {
 protected:
  // Opens the file as a document of the layout that it was built in.
  void Open(NitfFile& document, NtfBuilder builder) {
    builder.header["FVER"] = "02.10";  // the only one that opens, whatever the layout
    Open(document, builder, builder.Build());
  }
  void Open(NitfFile& document, const NtfBuilder& builder, const BuiltFile& file) {
    document.IsNitf20 = builder.layout == tavi_test::Layout::kNitf20;
    ASSERT_EQ(tavi::OpenNitfFile(document, file.Write(directory()).c_str()), SUCCESS);
  }
  static NtfBuilder File(const GraphicSpec& graphic, tavi_test::Layout layout = tavi_test::Layout::kNitf21) {
    NtfBuilder builder;
    builder.layout = layout;
    builder.graphics = {graphic};
    return builder;
  }
  static tavi::GrSubHdr& Graphic(NitfFile& document, uint32_t index = 0) {
    return *tavi::SubheaderAt(document.Graphics, index, document.GraphicCount);
  }
  static bool IsEmpty(NitfFile& document, uint32_t index = 0) {
    return HostVecIsEmpty(Graphic(document, index).Vector.get()) != 0;
  }
};

// What a load leaves in a vector: one line of that length.
inline int32_t AddOneLine(HostVector* vector, double length = 10.0) {
  VectorObjectRecord record;
  HostVecInitObject(&record);
  record.head.size = sizeof record.line;
  record.head.kind = VECTOR_LINE;
  record.line.second.x = length;
  return HostVecAddObject(vector, 0, VECTOR_LINE, &record, 0);
}

}  // namespace graphics

#endif  // TAVI_TESTS_GRAPHICS_GRAPHICS_TEST_H
