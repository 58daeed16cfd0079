#include "ReadAll.h"

#include <algorithm>

namespace tavi::records {
namespace {

using tavi_test::Bytes;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;
using tavi_test::Tre;

void Note(Reading& reading, int32_t result) {
  reading.worst = std::min(reading.worst, result);
  ++reading.records;
}

template <class Record>
void ReadRecord(NitfHandle handle, uint32_t index, Reading& reading) {
  Guarded<Record> record;
  Note(reading, Get(handle, index, record.get()));
  EXPECT_EQ(Free(record.get()), SUCCESS);
}

template <class Record>
void ReadRecords(NitfHandle handle, int32_t count, Reading& reading) {
  ASSERT_GE(count, 0);
  ASSERT_LE(count, 999);
  for (uint32_t i = 0; i < static_cast<uint32_t>(count); ++i) {
    ReadRecord<Record>(handle, i, reading);
  }
  Guarded<Record> beyond;
  EXPECT_EQ(Get(handle, static_cast<uint32_t>(count), beyond.get()), 87);
}

// A text of five digits' length at most; a length that lies beyond that is no application's buffer.
void ReadText(NitfHandle handle, uint32_t index) {
  static uint8_t buffer[100000 + 1];
  uint32_t size = 0;
  EXPECT_EQ(Tavi_NITFGetTextSegment(handle, index, nullptr, &size), SUCCESS);
  if (size >= sizeof buffer - 1) {
    return;
  }
  buffer[size + 1] = kGuardByte;
  const int32_t status = Tavi_NITFGetTextSegment(handle, index, buffer, nullptr);
  EXPECT_TRUE(status == SUCCESS || status == ERR_FILE_READ) << status;
  EXPECT_EQ(buffer[size + 1], kGuardByte);
}

}  // namespace

Reading ReadAll(NitfHandle handle) {
  Reading reading;
  ReadRecord<NitfHeaderInfo>(handle, 0, reading);
  ReadRecords<NitfImageHeaderInfo>(handle, Tavi_NITFGetImageHeaderCount(handle), reading);
  ReadRecords<NitfGraphicHeaderInfo>(handle, Tavi_NITFGetGraphicHeaderCount(handle), reading);
  const int32_t texts = Tavi_NITFGetTextHeaderCount(handle);
  ReadRecords<NitfTextHeaderInfo>(handle, texts, reading);
  for (uint32_t i = 0; i < static_cast<uint32_t>(texts); ++i) {
    ReadText(handle, i);
  }
  return reading;
}

NtfBuilder FileOfAllRecords() {
  NtfBuilder file;
  file.udhd = Tre("UDHTRE", "user data");
  file.xhd = Tre("XHDTRE", "extended data");
  ImageSpec image = GreyImage(2, 2);
  image.ic = "NM";
  image.igeolo = std::string(60, '0');
  image.comments = {"first comment", "second comment"};
  image.udid = Tre("UDITRE", "about the image");
  image.ixshd = Tre("IXSTRE", "more about it");
  image.mask.block_offsets = {0};
  image.mask.pad_code = {7};
  file.images = {image, GreyImage(1, 1).Level(2)};
  file.graphics.resize(2);
  file.texts.resize(2);
  file.data_extensions.resize(2);
  file.reserved.resize(2);
  for (size_t i = 0; i < 2; ++i) {
    Bytes two = Tre("FSTTRE", "one");
    const Bytes second = Tre("SNDTRE", std::string(i, 'x'));
    two.insert(two.end(), second.begin(), second.end());
    file.graphics[i].sxshd = two;
    file.graphics[i].data = Bytes(9 + i, 'g');
    file.texts[i].txshd = two;
    file.texts[i].data = Bytes(7 + i, 't');
    file.data_extensions[i].desshf = Bytes(5 + i, 'u');
    file.data_extensions[i].data = two;
    file.reserved[i] = {Bytes(3, 'R'), Bytes(4, 'E')};
  }
  return file;
}

}  // namespace tavi::records
