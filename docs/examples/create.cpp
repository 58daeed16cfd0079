/*
 * Makes a NITF file of a picture, an annotation drawn over it and a text.
 *
 *   c++ -std=c++20 -Iinclude docs/examples/create.cpp -o create \
 *       -Lbuild/lib -Wl,-rpath,build/lib -lTaviNitf -lTaviHost
 *   ./create new.ntf note.txt
 */
#include <filesystem>
#include <iostream>
#include <vector>

#include "TaviNitf.h"

namespace {

constexpr uint32_t kWidth = 320;
constexpr uint32_t kHeight = 200;

// A picture of smooth colours, which the library encodes as JPEG.
int32_t AppendPicture(NitfHandle file) {
  HostBitmap picture = {};
  int32_t status =
      HostCreateBitmap(&picture, sizeof picture, 1, kWidth, kHeight, 24, 1, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  std::vector<uint8_t> row(picture.bytes_per_line);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      row[3 * x] = static_cast<uint8_t>(255 * y / kHeight);           // blue
      row[3 * x + 1] = static_cast<uint8_t>(255 * x / kWidth);        // green
      row[3 * x + 2] = static_cast<uint8_t>(255 - 255 * x / kWidth);  // red
    }
    HostPutBitmapRow(&picture, row.data(), y, row.size());
  }
  constexpr int32_t kYcbcrJpeg = 10;
  constexpr int32_t kGoodQuality = 10;
  status = Tavi_NITFAppendImageSegment(file, &picture, kYcbcrJpeg, 24, kGoodQuality);
  HostFreeBitmap(&picture);
  return status;
}

// A yellow frame of 100 x 60 at column 40, row 30. A drawing's y runs upward: its rows are negative.
int32_t AppendFrame(NitfHandle file) {
  HostVector drawing = {};
  HostVecInit(&drawing);
  ObjectLayerRecord layer_record = {};
  layer_record.size = sizeof layer_record;
  layer_record.name[0] = 'A';
  layer_record.word132 = 1;
  HostVectorLayer layer = {};
  int32_t status = HostVecAddLayer(&drawing, &layer_record, &layer, 4);
  if (status == SUCCESS) status = HostVecSetActiveLayer(&drawing, &layer);

  VectorObjectRecord object;
  HostVecInitObject(&object);
  object.rectangle.size = sizeof object.rectangle;
  object.rectangle.kind = VECTOR_RECTANGLE;
  object.rectangle.corner = {2, -2, 0, 0};
  object.rectangle.opposite = {98, -58, 0, 0};
  object.rectangle.pen.width = 4;
  object.rectangle.pen.color = 0x00FFFF;  // blue, green, red from the left
  if (status == SUCCESS) status = HostVecAddObject(&drawing, 0, VECTOR_RECTANGLE, &object, 0);

  const HostRect place = {40, 30, 140, 90};  // left, top, right, bottom
  if (status == SUCCESS) status = Tavi_NITFAppendGraphicSegment(file, &drawing, &place);
  HostVecFree(&drawing);
  return status;
}

// What a subheader says is changed through its record: get, edit, set, free. The getter's text goes back into the
// record before it is freed. The location is 0, 0 here: a set exchanges its row and column.
int32_t NameFrame(NitfHandle file) {
  NitfGraphicHeaderInfo header = {};
  int32_t status = Tavi_NITFGetGraphicHeader(file, 0, &header);
  if (status == SUCCESS) {
    char name[] = "Frame";
    char* const old_name = header.SNAME;
    header.SNAME = name;
    status = Tavi_NITFSetGraphicHeader(file, 0, &header);
    header.SNAME = old_name;
  }
  Tavi_NITFFreeGraphicHeader(&header);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  NitfHandle file = nullptr;
  int32_t status = Tavi_NITFCreate(&file, nullptr);
  if (status == SUCCESS) status = AppendPicture(file);
  if (status == SUCCESS) status = AppendFrame(file);
  if (status == SUCCESS) status = NameFrame(file);
  if (status == SUCCESS) {
    status = Tavi_NITFAppendTextSegment(file, std::filesystem::path(argv[2]).wstring().c_str());
  }
  if (status == SUCCESS) status = Tavi_NITFSaveFile(file, std::filesystem::path(argv[1]).wstring().c_str());
  Tavi_NITFDestroy(&file);
  if (status != SUCCESS) std::cerr << argv[1] << ": status " << status << '\n';
  return status == SUCCESS ? 0 : 1;
}
