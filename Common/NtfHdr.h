// The file header.
#pragma once

#include <cstdint>
#include <span>

#include "HeaderLayout.h"

struct NitfFile;

namespace tavi {

struct StrmFHdr;

struct NtfHdr {
  static constexpr bool kTerminatesTexts = false;
  static constexpr Start kSecurityStart = Start::kOpenBlank;
  static constexpr Start kDowngradeStart = Start::kOpenBlank;
  static constexpr Fill kFill = Fill::kZero;
  static constexpr Fill kDowngradeFill = Fill::kZero;

  // The lists named Read describe the source file and serve every seek in it; those named Work describe the
  // file to be written. They start equal; an empty list has no memory.
  uint32_t Valid = 0;  // FHDR has passed
  char Scratch[256] = {};
  uint32_t ClevelValue = 3;
  uint32_t BackgroundValue = 0;  // FBKGC, first byte lowest
  uint32_t FlValue = 0;
  uint32_t HlRead = 0;  // base of all seeks
  uint32_t HlWork = 0;
  uint32_t NumImages = 0;
  LengthList LishRead, LishWork, LiRead;
  uint32_t FlMirror = 0;
  LengthList LiWork;
  uint32_t NumGraphics = 0;
  LengthList LsshRead, LsshWork, LsRead, LsWork;
  uint32_t NumLabels = 0;
  LengthList LlshList, LlRead, LlWork;
  uint32_t NumTexts = 0;
  LengthList LtshList, LtRead, LtWork;
  uint32_t NumDes = 0;
  LengthList LdshList, LdList;
  uint32_t NumRes = 0;
  LengthList LreshList, LreList;
  uint32_t UserTreCount = 0;
  uint32_t ExtendedTreCount = 0;

  // The buffers lie one behind the other: where the reader writes no NUL, a text runs on into the next.
  struct Texts {
    char FHDR[5], FVER[6], CLEVEL[3], STYPE[5], OSTAID[11], FDT[15], FTITLE[81], FSCLAS[2];
    SECURITY_BUFFERS(FS);
    char FSCOP[6], FSCPYS[6], ENCRYP[2], FBKGC[4], ONAME[28], OPHONE[19], FL[13], HL[7];
    char NUMI[4], NUMS[4], NUMDES[4], NUMX[4], NUMT[4], NUML[4], NUMRES[4];
    char UDHDL[6], UDHOFL[4], XHDL[6], XHDLOFL[4];
  };
  Texts Text{};

  // Extended data without the overflow numbers, a NUL behind; none when absent.
  HostArray<uint8_t> UDHD, XHD;
  const uint8_t* UserTreCursor = nullptr;  // start of UDHD after a read, not owned
  const uint8_t* ExtendedTreCursor = nullptr;

  NtfHdr();
  // Frees what the header owns; harmless when run again.
  void Release();
};

static_assert(sizeof(NtfHdr::Texts) == 5 + 6 + 3 + 5 + 11 + 15 + 81 + 2 + 3 + 41 * 3 + 3 + 9 + 5 + 2 + 9 +
                                           44 + 2 + 41 + 2 + 9 + 7 + 41 + 21 + 6 + 6 + 2 + 4 + 28 + 19 + 13 +
                                           7 + 4 * 7 + 6 + 4 + 6 + 4);

// The layout of the file header.
std::span<const FieldRow<NtfHdr>> FileHeaderRows();
// The columns of its table of images: LISH and LI.
std::span<const FieldRow<NtfHdr>> ImageLengthColumns();

// Reads the header from where the file stands. `streaming` 1: the pass over replacement data.
int32_t ReadFileHeader(NtfHdr& header, NitfFile& document, StrmFHdr& stream, uint32_t streaming);

// No list grows beyond this: an application can set a count to anything.
inline constexpr uint32_t kMostLengths = 99999;

// Room for one more entry, 0, in all lists of a group; false without memory, and then all are as before.
bool MakeRoomForImage(NtfHdr& header);
bool MakeRoomForGraphic(NtfHdr& header);
bool MakeRoomForText(NtfHdr& header);

// One more entry for a new segment, at the index of the group's count, which the caller raises last. False
// without memory, and then the lists are as before.
bool AddImageSubheaderLength(NtfHdr& header, uint32_t length);
bool AddImageDataLength(NtfHdr& header, uint32_t length);
bool AddGraphicSubheaderLength(NtfHdr& header, uint32_t length);  // stores 258 whatever it is given
bool AddGraphicDataLength(NtfHdr& header, uint32_t length);
bool AddTextDataLength(NtfHdr& header, uint32_t length);

}  // namespace tavi
