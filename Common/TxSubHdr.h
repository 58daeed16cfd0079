// The text subheader.
#pragma once

#include <cstdint>
#include <span>

#include "HeaderLayout.h"

struct NitfFile;

namespace tavi {

struct TxSubHdr {
  static constexpr bool kTerminatesTexts = true;
  static constexpr Start kSecurityStart = Start::kBlank;
  static constexpr Start kDowngradeStart = Start::kNul;
  static constexpr Fill kFill = Fill::kZero;
  static constexpr Fill kDowngradeFill = Fill::kBlank;

  explicit TxSubHdr(NitfFile* document);

  HostArray<uint8_t> TextDataBuffer;  // text held in memory in place of the source's, with a NUL
  uint32_t TextDataInMemory = 0;
  uint32_t SignatureSeen = 0;
  uint32_t AttachmentLevel = 0;
  struct Texts {
    char TEXTID[11], TE[3], TXTDT[15], TXTALVL[4], TXTITL[81], TSCLAS[2];
    SECURITY_BUFFERS(TS);
    char ENCRYP[2], TXTFMT[4], TXSHDL[6], TXSOFL[4];
  };
  Texts Text{};
  HostArray<uint8_t> ExtendedTre;  // TXSHD and a NUL
  uint32_t ExtendedTreCount = 0;
  const uint8_t* ExtendedTreView = nullptr;  // not owned
  NitfFile* Owner = nullptr;
  uint32_t SegmentIndex = 0;
};

std::span<const FieldRow<TxSubHdr>> TextRows();

// Reads the subheader from where the file stands and goes back there; the text itself is not read.
int32_t ReadTextSubHeader(TxSubHdr& record, NitfFile& document);

}  // namespace tavi
