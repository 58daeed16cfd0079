// The graphic subheader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "HeaderLayout.h"

struct NitfFile;

namespace tavi {

struct GrSubHdr {
  static constexpr bool kTerminatesTexts = true;
  static constexpr Start kSecurityStart = Start::kBlank;
  static constexpr Start kDowngradeStart = Start::kBlank;
  static constexpr Fill kFill = Fill::kBlank;
  static constexpr Fill kDowngradeFill = Fill::kBlank;

  explicit GrSubHdr(NitfFile* document);

  OwnedVector Vector;                    // the segment's drawing, as the last draw loaded or built it
  HostArray<uint8_t> GraphicDataBuffer;  // drawing held in memory in place of the source's
  uint32_t GraphicDataInMemory = 0;
  uint32_t SignatureSeen = 0;
  uint32_t DisplayLevel = 0;
  uint32_t SymbolBits = 0;
  uint32_t AttachmentLevel = 0;
  int32_t LocationRow = 0;
  int32_t LocationColumn = 0;
  int32_t Bound1First = 0;
  int32_t Bound1Second = 0;
  int32_t Bound2First = 0;
  int32_t Bound2Second = 0;
  struct Texts {
    char SID[11], SY[3], SNAME[21], SSCLAS[2];
    SECURITY_BUFFERS(SS);
    char ENCRYP[2], SFMT[2], SSTRUCT[14], SDLVL[4], SALVL[4], SLOC[11], SBND1[11], SCOLOR[2], SBND2[11],
        SRES2[3];
    char SXSHDL[6], SXSOFL[4], NLIPS[5], NPIXPL[5], NWDTH[5], NBPP[2], SNUM[7], SROT[4], NELUT[4];
  };
  Texts Text{};
  uint32_t LutEntries = 0;
  HostArray<uint8_t> ExtendedTre;            // SXSHD and a NUL
  HostArray<HostPaletteEntry> Lut;           // colour table of LutEntries entries
  const uint8_t* ExtendedTreView = nullptr;  // not owned
  uint32_t ExtendedTreCount = 0;
  NitfFile* Owner = nullptr;
  uint32_t SegmentIndex = 0;
};

// The drawing stands at the head of the record.
static_assert(std::is_standard_layout_v<GrSubHdr> && offsetof(GrSubHdr, Vector) == 0);

std::span<const FieldRow<GrSubHdr>> GraphicRows();

// Reads the subheader from where the file stands and goes back there; the drawing is not read.
int32_t ReadGraphicSubHeader(GrSubHdr& record, NitfFile& document);

}  // namespace tavi
