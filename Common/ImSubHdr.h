// The image subheader, with the band table, the look-up table and the data mask table that belong to it.
#pragma once

#include <cstdint>
#include <span>

#include "HeaderLayout.h"

struct NitfFile;

namespace tavi {

struct StrmFHdr;

// Codes of the parsed numbers. The reader and the setters give no others.
enum PixelTypeCode : uint32_t {
  kPixelInteger = 0,
  kPixelBilevel = 1,
  kPixelReal = 3 /* reserved, given by nothing */
};
enum RepresentationCode : uint32_t { kMono = 0, kRgb = 1, kRgbLut = 2, kMulti = 3 };
enum CompressionCode : uint32_t {
  kNC = 0,
  kNM = 1,
  kC0 = 2,
  kC1 = 3,
  kC2 = 4,
  kC3 = 5,
  kC4 = 6,
  kC5 = 7,
  kC6 = 8,
  kC8 = 9,
  kI1 = 10,
  kM0 = 11,
  kM1 = 12,
  kM2 = 13,
  kM3 = 14,
  kM4 = 15,
  kM5 = 16,
  kM6 = 17,
  kM8 = 18
};
enum ModeCode : uint32_t { kByBlock = 0, kByPixel = 1, kByRow = 2, kSequential = 3 };
enum ComratCode : uint32_t { kComrat1D = 0, kComrat2DS = 1, kComrat2DH = 2, kComratOther = 3 };
enum BandRoleCode : uint32_t {
  kRoleNone = 0,
  kRoleLookup = 1,
  kRoleRed = 2,
  kRoleGreen = 3,
  kRoleBlue = 4,
  kRoleMono = 5,
  kRoleLuma = 6,
  kRoleCb = 7,
  kRoleCr = 8
};

// Mask records: 32-bit big-endian entries as in the file, and a zero entry behind the last.
class MaskTable {
 public:
  static constexpr uint32_t kAbsentBlock = 0xFFFFFFFF;
  bool exists() const { return bytes.exists(); }
  // The entry of a block; an index past the table reads as absent.
  uint32_t At(uint64_t block) const {
    const uint64_t at = block * 4;
    return at + 4 < bytes.size() ? ReadBig32(bytes.data() + at) : kAbsentBlock;
  }
  HostArray<uint8_t> bytes;
};

struct ImSubHdr {
  static constexpr bool kTerminatesTexts = true;
  static constexpr Start kSecurityStart = Start::kBlank;
  static constexpr Start kDowngradeStart = Start::kBlank;
  static constexpr Fill kFill = Fill::kBlank;
  static constexpr Fill kDowngradeFill = Fill::kBlank;

  explicit ImSubHdr(NitfFile* document);

  // What decoding and composition compute with.
  HostArray<HostPaletteEntry> Lut;  // of the last band with look-up tables: the first table is red
  uint32_t SignatureSeen = 0;
  int32_t Rows = 0;
  int32_t Cols = 0;
  uint32_t PixelType = kPixelInteger;
  uint32_t Representation = kRgb;
  uint32_t ActualBits = 1;
  uint32_t RightJustified = 1;
  uint32_t Compression = kNC;
  uint32_t BandField = 0;  // the digit of NBANDS
  uint32_t BandCount = 0;  // NBANDS, or XBANDS when that digit is 0
  uint32_t Mode = kByPixel;
  uint32_t CommentCount = 0;
  uint32_t BlocksPerRow = 0;
  uint32_t BlocksPerColumn = 0;
  uint32_t BlockWidth = 0;
  uint32_t BlockHeight = 0;
  uint32_t SampleBits = 1;
  uint32_t DisplayLevel = 1;
  uint32_t AttachmentLevel = 0;
  int32_t LocationRow = 0;
  int32_t LocationColumn = 0;
  double Magnification = 1.0;
  uint32_t DataOffset = 0;
  uint32_t BlockMaskLength = 0;
  uint32_t PadMaskLength = 0;
  uint32_t PadCodeBits = 0;
  uint32_t ComratMode = kComratOther;
  LengthList BandRoles;
  uint32_t UserTreCount = 0;
  uint32_t ExtendedTreCount = 0;

  struct Texts {
    char IM[3], IID1[11], IDATIM[15], TGTID[18], IID2[81], ISCLAS[2];
    SECURITY_BUFFERS(IS);
    char ENCRYP[2], ISORCE[43], NROWS[9], NCOLS[9], PVTYPE[4], IREP[9], ICAT[9], ABPP[3], PJUST[2], ICORDS[2];
    char IGEOLO[61], NICOM[2], IC[3], COMRAT[5], NBANDS[2], XBANDS[6], ISYNC[2], IMODE[2], NBPR[5], NBPC[5];
    char NPPBH[5], NPPBV[5], NBPP[3], IDLVL[4], IALVL[4], ILOC[11], IMAG[5], UDIDL[6], UDOFL[4], IXSHDL[6],
        IXSOFL[4];
  };
  Texts Text{};

  TextSlots<81> Comments;
  TextSlots<7> BandSubcategories;
  TextSlots<2> BandFilterConditions;
  TextSlots<4> BandFilterCodes;
  LengthList BandLutCounts;
  LengthList BandLutEntries;
  HostArray<uint8_t> UserTre;      // UDID and a NUL
  HostArray<uint8_t> ExtendedTre;  // IXSHD and a NUL
  MaskTable BlockMask;
  MaskTable PadMask;
  HostArray<uint8_t> PadCode;                // TPXCD and a NUL
  int32_t BandSelection[3] = {-1, -1, -1};   // remembered by the band choice
  const uint8_t* UserTreView = nullptr;      // not owned
  const uint8_t* ExtendedTreView = nullptr;  // not owned
  HostArray<uint8_t> PendingData;            // coded data of an appended segment
  uint32_t HasPendingData = 0;
  NitfFile* Owner = nullptr;
  uint32_t SegmentIndex = 0;
};

std::span<const FieldRow<ImSubHdr>> ImageRows();
// The texts of IREPBAND.
std::span<const CodeText> BandRoleTexts();

// Reads the subheader and its mask table from where the file stands; when all is well, goes back there.
// `streaming` 1: the pass over replacement data.
int32_t ReadImageSubHeader(ImSubHdr& record, NitfFile& document, StrmFHdr& stream, uint32_t streaming);

// NBANDS, or XBANDS when that is 0: the band count that decoding uses.
uint32_t EffectiveBandCount(const ImSubHdr& record);
// The same, but no more than there are band records: a streaming pass that ends early may leave a count without its
// bands, and no loop may run over those.
uint32_t KnownBandCount(const ImSubHdr& record);
// The role of a band; none at or beyond the band count.
uint32_t BandRole(const ImSubHdr& record, uint32_t band);
// Replaces the pad pixel code. ERR_NO_MEMORY leaves none.
int32_t SetPadPixelCode(ImSubHdr& record, const char* text);

}  // namespace tavi
