// The data extension subheader. A data extension is carried, not interpreted.
#pragma once

#include <cstdint>
#include <span>

#include "HeaderLayout.h"

struct NitfFile;

namespace tavi {

struct StrmFHdr;

struct DExSbHdr {
  static constexpr bool kTerminatesTexts = true;
  static constexpr Start kSecurityStart = Start::kNul;
  static constexpr Start kDowngradeStart = Start::kNul;
  static constexpr Fill kFill = Fill::kZero;
  static constexpr Fill kDowngradeFill = Fill::kZero;

  uint32_t SignatureSeen = 0;
  struct Texts {
    char DE[3], DESID[26], DESVER[3], DESCLAS[2];
    SECURITY_BUFFERS(DES);
    char DESOFLW[7], DESITEM[4], DESSHL[5];
  };
  Texts Text{};
  HostArray<uint8_t> UserSubheader;  // DESSHF and a NUL; none when DESSHL is 0
};

std::span<const FieldRow<DExSbHdr>> DataExtensionRows();

// Reads the subheader from where the file stands and goes back there.
int32_t ReadDataExtensionSubHeader(DExSbHdr& record, NitfFile& document, uint32_t index);

}  // namespace tavi
