// The label subheader, which exists in the 2.0 layout only.
#pragma once

#include <cstdint>
#include <span>

#include "HeaderLayout.h"

struct NitfFile;

namespace tavi {

struct LbSubHdr {
  static constexpr bool kTerminatesTexts = true;
  static constexpr Start kSecurityStart = Start::kBlank;
  static constexpr Fill kFill = Fill::kZero;

  explicit LbSubHdr(NitfFile* document);

  HostArray<uint8_t> LabelDataBuffer;  // label text held in memory
  uint32_t LabelDataInMemory = 0;
  uint32_t SignatureSeen = 0;
  uint32_t CellWidth = 0;
  uint32_t CellHeight = 0;
  uint32_t DisplayLevel = 0;
  uint32_t AttachmentLevel = 0;
  int32_t LocationRow = 0;
  int32_t LocationColumn = 0;
  uint32_t TextColour = 0;               // 0x00BBGGRR
  uint32_t BackgroundColour = 0xFFFFFF;  // 0x00BBGGRR
  struct Texts {
    char LA[3], LID[11], LSCLAS[2], LSCODE[41], LSCTLH[41], LSREL[41], LSCAUT[21], LSCTLN[21], LSDWNG[7],
        LSDEVT[41];
    char ENCRYP[2], LFS[2], LCW[3], LCH[3], LDLVL[4], LALVL[4], LLOC[11], LTC[4], LBC[4], LXSHDL[6],
        LXSOFL[4];
  };
  Texts Text{};
  HostArray<uint8_t> ExtendedTre;  // LXSHD and a NUL
  uint32_t ExtendedTreCount = 0;
  const uint8_t* ExtendedTreView = nullptr;  // not owned
  NitfFile* Owner = nullptr;
  uint32_t SegmentIndex = 0;
};

std::span<const FieldRow<LbSubHdr>> LabelRows();

// Reads the subheader from where the file stands and goes back there; the label text is not read.
int32_t ReadLabelSubHeader(LbSubHdr& record, NitfFile& document);

}  // namespace tavi
