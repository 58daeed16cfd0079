// Streams that command-line tools make, one of each kind in each place that a file has for them, against what the
// tools make of them again.
#include <memory>

#include "../host_codecs/FaxEncoder.h"
#include "PictureTest.h"
#include "Tools.h"

namespace tavi_test {
namespace {

class ToolPictures : public PictureTest {
 protected:
  Coding Cjpeg(const std::string& options) {
    return {"cjpeg", [this, options](const Pixels& p) { return ByCjpeg(p, options, directory()); },
            [this](const Stream& s) { return Restored(ByDjpeg(s, directory())); }};
  }

  Coding OpjCompress(uint32_t bits, bool boxed, const std::string& options) {
    return {"opj_compress",
            [=, this](const Pixels& p) { return ByOpjCompress(p, bits, boxed, options, directory()); },
            [this](const Stream& s) { return Restored(ByOpjDecompress(s, directory())); }};
  }

  Coding Dcmcjpeg(uint32_t bits, const std::string& options) {
    const auto latest = std::make_shared<Pixels>();
    return {"dcmcjpeg",
            [=, this](const Pixels& p) {
              const std::optional<DeepJpeg> deep = ByDcmcjpeg(p, bits, options, directory());
              EXPECT_TRUE(deep.has_value());
              if (!deep) return Stream();
              *latest = deep->decoded;
              return deep->stream;
            },
            [=](const Stream&) { return *latest; }};
  }

 private:
  static Pixels Restored(const std::optional<Pixels>& pixels) {
    EXPECT_TRUE(pixels.has_value());
    return pixels.value_or(Pixels{});
  }
};

TEST_F(ToolPictures, GreyJpeg) {
  for (const auto& [ic, placement] : JpegCodes()) {
    for (const char* options : {"-quality 90 -baseline", "-quality 85 -progressive", "-quality 90 -restart 1",
                                "-quality 75 -restart 3B -optimize", "-quality 80 -arithmetic"}) {
      SCOPED_TRACE(options);
      Expect(ic, "MONO", 8, 1, placement, Cjpeg(options), 2);
    }
  }
}

TEST_F(ToolPictures, ColourJpeg) {
  for (const auto& [ic, placement] : JpegCodes()) {
    for (const char* options :
         {"-quality 90 -baseline -sample 1x1", "-quality 90 -baseline -sample 2x1",
          "-quality 90 -sample 2x2 -restart 1", "-quality 90 -progressive -sample 1x2"}) {
      SCOPED_TRACE(options);
      Expect(ic, "YCbCr601", 8, 3, placement, Cjpeg(options), 2);
      Expect(ic, "RGB", 8, 3, placement, Cjpeg(options), 2);
    }
    Expect(ic, "RGB", 8, 3, placement, Cjpeg("-rgb -quality 90"), 2);
  }
}

TEST_F(ToolPictures, BandSequentialJpeg) {
  const Coding coding = Cjpeg("-quality 90");
  const Coded scanned = MakeBands("C3", MakeScene(kWidth, kHeight, 3, 8), coding);
  ExpectShown(scanned.image, scanned.expected, 2, "a stream for each band", coding.name);
  const Coded masked = MakeMaskedBands("M3", MakeScene(kWidth, kHeight, 1, 8), coding);
  ExpectShown(masked.image, masked.expected, 2, "a stream for each band", coding.name);
}

TEST_F(ToolPictures, TwelveBitJpeg) {
  for (const auto& [ic, placement] : JpegCodes()) {
    for (const char* options : {"+ee", "+ep"}) {
      SCOPED_TRACE(options);
      Expect(ic, "MONO", 12, 1, placement, Dcmcjpeg(12, options), 2);
    }
  }
}

// What dcmdjpeg restores is the very scene, but for 12 bits, which the tool codes as such only when it may stretch
// them first.
TEST_F(ToolPictures, LosslessJpeg) {
  for (const auto& [ic, placement] : LosslessCodes()) {
    for (const uint32_t bits : {8U, 12U, 16U}) {
      for (const char* options : {"+e1", "+el +sv 7"}) {
        SCOPED_TRACE(options);
        const Pixels scene = MakeScene(kWidth, kHeight, 1, bits);
        const Coding coding = Dcmcjpeg(bits, options + std::string(bits == 12 ? " +pl" : ""));
        const Coded coded = Make(ic, "MONO", bits, scene, placement, coding);
        if (bits != 12) {
          EXPECT_EQ(MaxDifference(coded.expected, scene), 0);
        }
        ExpectShown(coded.image, Shown(coded.expected, bits), bits == 8 ? 0 : 1, NameOf(placement),
                    "dcmcjpeg, lossless");
      }
    }
  }
}

TEST_F(ToolPictures, BandSequentialLosslessJpeg) {
  const Pixels scene = MakeScene(kWidth, kHeight, 3, 8);
  const Coded scanned = MakeBands("C5", scene, Dcmcjpeg(8, "+e1"));
  ExpectShown(scanned.image, scene, 0, "a stream for each band", "dcmcjpeg, lossless");
  const Pixels grey = MakeScene(kWidth, kHeight, 1, 8);
  const Coded masked = MakeMaskedBands("M5", grey, Dcmcjpeg(8, "+e1"));
  ExpectShown(masked.image, grey, 0, "a stream for each band", "dcmcjpeg, lossless");
}

TEST_F(ToolPictures, Jpeg2000) {
  for (const char* ic : {"C8", "M8", "C6", "M6"}) {
    for (const bool boxed : {false, true}) {
      for (const char* options :
           {"-r 12", "-I -r 8", "-p RPCL -n 3 -b 32,32", "-r 30,10,1", "-t 24,20 -n 3"}) {
        SCOPED_TRACE(options);
        for (const uint32_t bits : {8U, 12U, 16U})
          Expect(ic, "MONO", bits, 1, Placement::kSingle, OpjCompress(bits, boxed, options),
                 bits == 8 ? 0 : 1);
        Expect(ic, "RGB", 8, 3, Placement::kSingle, OpjCompress(8, boxed, options), 0);
      }
    }
  }
}

// The tiles of the codestream are the blocks.
TEST_F(ToolPictures, TilesWithinOneJpeg2000Stream) {
  const Pixels scene = MakeScene(96, 64, 3, 8);
  for (const char* ic : {"C8", "M8"}) {
    for (const bool boxed : {false, true}) {
      const Coding coding = OpjCompress(8, boxed, "-t 32,32");
      ImageSpec image = CodedImage(ic, "RGB", 3, 3, 2, 32, 32);
      image.pixels = coding.encode(scene);
      EXPECT_EQ(MaxDifference(coding.restore(image.pixels), scene), 0);
      ExpectShown(image, scene, 0, "blocks in one stream", coding.name);
    }
  }
}

// Codes that carry no stream of their own kind are decoded all the same, with and without tiles.
TEST_F(ToolPictures, C6AndM6HoldAnyStream) {
  for (const char* ic : {"C6", "M6"}) {
    for (const Placement placement : {Placement::kSingle, Placement::kScanned}) {
      Expect(ic, "MONO", 8, 1, placement, Cjpeg("-quality 90"), 2);
      Expect(ic, "RGB", 8, 3, placement, Cjpeg("-quality 90"), 2);
    }
  }
}

TEST_F(ToolPictures, Fax) {
  const Pixels page = MakePage(200, 120);
  Pixels shown = page;
  for (uint16_t& sample : shown.samples) sample = sample != 0 ? 255 : 0;
  for (const char* ic : {"C1", "M1"}) {
    for (const auto& [comrat, compression] :
         {std::pair{"1D", "g3:1d"}, {"1D", "g3:1d:fill"}, {"2DS", "g3:2d"}, {"2DH", "g3:2d:fill"}}) {
      SCOPED_TRACE(compression);
      const Stream stream = ByTiffcp(page, compression, directory());
      const std::optional<Pixels> restored =
          ByFax2tiff(stream, compression[3] == '2', page.width, directory());
      ASSERT_TRUE(restored.has_value());
      EXPECT_EQ(MaxDifference(*restored, page), 0);
      const std::string name = std::string("tiffcp, ") + compression;
      ImageSpec image = FaxImage(ic, comrat, page.width, page.height, stream);
      ExpectShown(image, shown, 0, "one stream", name);
      image.Blocks(4, 3, 50, 40);
      ExpectShown(image, shown, 0, "blocks in one stream", name);
    }
  }
}

}  // namespace
}  // namespace tavi_test
