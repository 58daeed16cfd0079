// Reads image subheaders that the tests build.
#ifndef TAVI_TESTS_UNIT_IMAGE_READ_H
#define TAVI_TESTS_UNIT_IMAGE_READ_H

#include "ImSubHdr.h"
#include "UnitTest.h"

namespace unit {

// One record read from the first image of a file.
struct ImageRead {
  NitfFile document;
  tavi::ImSubHdr record{&document};
  int32_t status = 0;
};

class ImageReadTest : public UnitTest {
 protected:
  void Read(ImageRead& read, const tavi_test::BuiltFile& file) {
    Attach(read.document, file);
    MoveTo(read.document, file.At("image[0].subheader"));
    tavi::StrmFHdr stream;
    read.status = tavi::ReadImageSubHeader(read.record, read.document, stream, 0);
  }
  void Read(ImageRead& read, const tavi_test::ImageSpec& image) {
    Read(read, tavi_test::NtfBuilder({image}).Build());
  }
  static tavi_test::ImageSpec With(const char* field, const std::string& text) {
    tavi_test::ImageSpec image = tavi_test::GreyImage(2, 2);
    image.fields[field] = text;
    return image;
  }
  int32_t StatusOf(const tavi_test::ImageSpec& image) {
    ImageRead read;
    Read(read, image);
    return read.status;
  }
};

}  // namespace unit

#endif  // TAVI_TESTS_UNIT_IMAGE_READ_H
