#include "TxSubHdr.h"

#include <cstring>

#include "SubHeaderReader.h"

namespace tavi {

namespace {

using R = TxSubHdr;
using Field = FieldRow<R>::Field;

bool DowngradesByEvent(const R& record, Layout) {
  return std::strcmp(record.Text.TSDWNG, kDowngradeByEvent) == 0;
}
bool HasExtendedData(const R& record, Layout) {
  return NumberOf(record.Text.TXSHDL) != 0;
}
int64_t ExtendedDataLength(const R& record) {
  return NumberOf(record.Text.TXSHDL) - kOverflowWidth;
}

int32_t MarkSignature(R& record, const Field&) {
  record.SignatureSeen = 1;
  return SUCCESS;
}

constexpr FieldRow<R> kRows[] = {
    TEXT(TE, 2).Must("TE", ERR_FILE_FORMAT).Then(MarkSignature).Starts("TE"),
    TEXT(TEXTID, 7, 10).Starts("ID        "),
    TEXT(TXTALVL, 3, kAbsent).Number(&R::AttachmentLevel).WrittenFromNumber(),
    TEXT(TXTDT, 14).Blank(),
    TEXT(TXTITL, 80).Blank().Filled(Fill::kBlank),
    TEXT(TSCLAS, 1).Starts("U"),
    SECURITY_ROWS(TS, DowngradesByEvent),
    TEXT(ENCRYP, 1),
    TEXT(TXTFMT, 3).Starts("STA"),
    TEXT(TXSHDL, 5),
    TEXT(TXSOFL, 3).When(HasExtendedData),
    FieldRow<R>::Block("TXSHD", &R::ExtendedTre, ExtendedDataLength).When(HasExtendedData),
};

}  // namespace

std::span<const FieldRow<TxSubHdr>> TextRows() {
  return kRows;
}

TxSubHdr::TxSubHdr(NitfFile* document) : Owner(document) {
  SetDefaults<TxSubHdr>(*this, kRows);
}

int32_t ReadTextSubHeader(TxSubHdr& record, NitfFile& document) {
  const int32_t status =
      ReadSubHeader<TxSubHdr>(record, kRows, document, SegmentKind::kText, record.SegmentIndex);
  if (status == SUCCESS) CountExtendedTres(record);
  return status;
}

}  // namespace tavi
