// The fields of the image subheader, stated a second time.
#ifndef TAVI_TESTS_UNIT_IM_SUB_HDR_FACTS_H
#define TAVI_TESTS_UNIT_IM_SUB_HDR_FACTS_H

#include "HeaderFacts.h"
#include "ImSubHdr.h"

namespace unit {

#define F(...) FACT(tavi::ImSubHdr::Texts, __VA_ARGS__)

inline constexpr FieldFact kImageFacts[] = {
    F(IM, 2, 2, Fill::kZero, "IM", 2),
    F(IID1, 10, 10, Fill::kZero, "Missing ID", 10),
    F(IDATIM, 14, 14, Fill::kBlank),
    F(TGTID, 17, 17, Fill::kBlank, "", 17),
    F(IID2, 80, 80, Fill::kBlank, "", 80),
    F(ISCLAS, 1, 1, Fill::kZero, "U", 1),
    F(ISCLSY, 2, kNone, Fill::kBlank, "", 2),
    F(ISCODE, 11, 40, Fill::kBlank, "", 40),
    F(ISCTLH, 2, 40, Fill::kBlank, "", 40),
    F(ISREL, 20, 40, Fill::kBlank, "", 40),
    F(ISDCTP, 2, kNone, Fill::kBlank, "", 2),
    F(ISDCDT, 8, kNone, Fill::kBlank),
    F(ISDCXM, 4, kNone, Fill::kBlank, "", 4),
    F(ISDG, 1, kNone, Fill::kBlank, "", 1),
    F(ISDGDT, 8, kNone, Fill::kBlank),
    F(ISCLTX, 43, kNone, Fill::kBlank, "", 43),
    F(ISCATP, 1, kNone, Fill::kBlank, "", 1),
    F(ISCAUT, 40, 20, Fill::kBlank, "", 40),
    F(ISCRSN, 1, kNone, Fill::kBlank, "", 1),
    F(ISSRDT, 8, kNone, Fill::kBlank),
    F(ISCTLN, 15, 20, Fill::kBlank, "", 20),
    F(ISDWNG, kNone, 6, Fill::kBlank),
    F(ISDEVT, kNone, 40, Fill::kBlank),
    F(ENCRYP, 1, 1),
    F(ISORCE, 42, 42, Fill::kBlank, "", 42),
    F(NROWS, 8, 8),
    F(NCOLS, 8, 8),
    F(PVTYPE, 3, 3, Fill::kBlank),
    F(IREP, 8, 8, Fill::kBlank),
    F(ICAT, 8, 8, Fill::kZero, "VIS", 8),
    F(ABPP, 2, 2),
    F(PJUST, 1, 1, Fill::kBlank),
    F(ICORDS, 1, 1, Fill::kBlank),
    F(IGEOLO, 60, 60, Fill::kBlank),
    F(NICOM, 1, 1),
    FACT_WITHOUT_BUFFER("ICOM", 80, 80),
    F(IC, 2, 2, Fill::kBlank),
    F(COMRAT, 4, 4, Fill::kBlank),
    F(NBANDS, 1, 1),
    F(XBANDS, 5, kNone),
    FACT_WITHOUT_BUFFER("IREPBAND", 2, 2),
    FACT_WITHOUT_BUFFER("ISUBCAT", 6, 6),
    FACT_WITHOUT_BUFFER("IFC", 1, 1),
    FACT_WITHOUT_BUFFER("IMFLT", 3, 3),
    FACT_WITHOUT_BUFFER("NLUTS", 1, 1),
    F(ISYNC, 1, 1),
    F(IMODE, 1, 1, Fill::kZero, "P"),
    F(NBPR, 4, 4),
    F(NBPC, 4, 4),
    F(NPPBH, 4, 4),
    F(NPPBV, 4, 4),
    F(NBPP, 2, 2),
    F(IDLVL, 3, 3),
    F(IALVL, 3, 3),
    F(ILOC, 10, 10),
    F(IMAG, 4, 4, Fill::kBlank),
    F(UDIDL, 5, 5),
    F(UDOFL, 3, 3),
    FACT_WITHOUT_BUFFER("UDID", kByLength, kByLength),
    F(IXSHDL, 5, 5),
    F(IXSOFL, 3, 3),
    FACT_WITHOUT_BUFFER("IXSHD", kByLength, kByLength),
    FACT_WITHOUT_BUFFER("TPXCD", kByLength, kByLength),
};
#undef F

}  // namespace unit

#endif  // TAVI_TESTS_UNIT_IM_SUB_HDR_FACTS_H
