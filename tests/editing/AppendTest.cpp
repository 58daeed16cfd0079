#include "AppendTest.h"

#include <fstream>

namespace editing {

void Picture::Pixel(uint32_t x, uint32_t y, uint32_t width, uint32_t height, uint8_t (&bgr)[3]) {
  bgr[0] = static_cast<uint8_t>(40 + 160 * x / width);
  bgr[1] = static_cast<uint8_t>(60 + 120 * y / height);
  bgr[2] = static_cast<uint8_t>(200 - 100 * (x + y) / (width + height));
}

Picture::Picture(uint32_t width, uint32_t height, uint32_t bits, uint32_t perspective) {
  EXPECT_EQ(HostCreateBitmap(&bitmap_, sizeof bitmap_, 1, width, height, bits, bits == 24 ? 1 : 0, nullptr,
                             perspective, nullptr, 0),
            SUCCESS);
  std::vector<uint8_t> row(bitmap_.bytes_per_line);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      uint8_t bgr[3];
      Pixel(x, y, width, height, bgr);
      if (bits == 24) std::copy(bgr, bgr + 3, &row[size_t{3} * x]);
      if (bits == 8) row[x] = bgr[1];
    }
    HostPutBitmapRow(&bitmap_, row.data(), perspective == 4 ? height - 1 - y : y, row.size());
  }
}

Drawing::Drawing(double left, double low, double right, double high, uint32_t color) {
  HostVecInit(&vector_);
  ObjectLayerRecord layer{};
  layer.size = sizeof layer;
  layer.name[0] = 'L';
  layer.word132 = 1;
  HostVectorLayer handle{};
  EXPECT_EQ(HostVecAddLayer(&vector_, &layer, &handle, 4), SUCCESS);
  EXPECT_EQ(HostVecSetActiveLayer(&vector_, &handle), SUCCESS);
  VectorObjectRecord object;
  HostVecInitObject(&object);
  object.rectangle.size = sizeof object.rectangle;
  object.rectangle.kind = VECTOR_RECTANGLE;
  object.rectangle.corner = {left, low, 0, 0};
  object.rectangle.opposite = {right, high, 0, 0};
  object.rectangle.pen.size = sizeof object.rectangle.pen;
  object.rectangle.pen.style = 5;  // none: the drawing reaches as far as its corners
  object.rectangle.brush.size = sizeof object.rectangle.brush;
  object.rectangle.brush.style = 1;
  object.rectangle.brush.color = color;
  EXPECT_EQ(HostVecAddObject(&vector_, 0, VECTOR_RECTANGLE, &object, 0), SUCCESS);
}

Drawing::Extents Drawing::Reach() const {
  Extents extents{};
  EXPECT_EQ(HostVecGetExtents(&vector_, extents.smallest, extents.largest), SUCCESS);
  return extents;
}

Composite Render(NitfHandle document) {
  Composite composite;
  HostBitmap bitmap{};
  composite.status = Tavi_NtfRenderBitmap(&bitmap, document);
  if (composite.status != SUCCESS) return composite;
  composite.width = bitmap.width;
  composite.height = bitmap.height;
  std::vector<uint8_t> row(bitmap.bytes_per_line);
  for (uint32_t y = bitmap.height; y-- > 0;) {
    HostGetBitmapRow(&bitmap, row.data(), y, row.size());
    composite.pixels.insert(composite.pixels.end(), row.begin(),
                            row.begin() + 3 * static_cast<std::ptrdiff_t>(bitmap.width));
  }
  HostFreeBitmap(&bitmap);
  return composite;
}

std::string FieldAt(const Bytes& file, size_t at, size_t width) {
  if (at + width > file.size()) return "past the end";
  return {file.begin() + static_cast<std::ptrdiff_t>(at),
          file.begin() + static_cast<std::ptrdiff_t>(at + width)};
}
size_t NumberAt(const Bytes& file, size_t at, size_t width) {
  return std::strtoul(FieldAt(file, at, width).c_str(), nullptr, 10);
}

State AppendTest::StateOf(NitfHandle document) const {
  const int32_t status = Tavi_NITFSaveFile(document, Output().wstring().c_str());
  return {Tavi_NITFGetImageHeaderCount(document),
          Tavi_NITFGetGraphicHeaderCount(document),
          Tavi_NITFGetTextHeaderCount(document),
          Tavi_NITFGetStatus(document),
          FileLength(document),
          status,
          ReadBytes(Output())};
}

std::wstring AppendTest::TextFile(const std::string& content, const std::string& name) const {
  const std::filesystem::path path = directory() / name;
  std::ofstream(path, std::ios::binary) << content;
  return path.wstring();
}

}  // namespace editing
