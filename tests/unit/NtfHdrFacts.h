// The fields of the file header, stated a second time.
#ifndef TAVI_TESTS_UNIT_NTF_HDR_FACTS_H
#define TAVI_TESTS_UNIT_NTF_HDR_FACTS_H

#include "HeaderFacts.h"
#include "NtfHdr.h"

namespace unit {

#define F(...) FACT(tavi::NtfHdr::Texts, __VA_ARGS__)

inline constexpr FieldFact kFileHeaderFacts[] = {
    F(FHDR, 4, 4, Fill::kZero, "NITF", 4),
    F(FVER, 5, 5, Fill::kZero, "02.10"),
    F(CLEVEL, 2, 2, Fill::kZero, "03"),
    F(STYPE, 4, 4, Fill::kZero, "BF01", 4),
    F(OSTAID, 10, 10, Fill::kZero, "", 10),
    F(FDT, 14, 14, Fill::kZero, "20050101010101"),
    F(FTITLE, 80, 80, Fill::kBlank, "", 80),
    F(FSCLAS, 1, 1, Fill::kZero, "U", 1),
    F(FSCLSY, 2, kNone, Fill::kOpenBlank, "", 2),
    F(FSCODE, 11, 40, Fill::kOpenBlank, "", 40),
    F(FSCTLH, 2, 40, Fill::kOpenBlank, "", 40),
    F(FSREL, 20, 40, Fill::kOpenBlank, "", 40),
    F(FSDCTP, 2, kNone, Fill::kOpenBlank, "", 2),
    F(FSDCDT, 8, kNone, Fill::kOpenBlank),
    F(FSDCXM, 4, kNone, Fill::kOpenBlank, "", 4),
    F(FSDG, 1, kNone, Fill::kOpenBlank, "", 1),
    F(FSDGDT, 8, kNone, Fill::kOpenBlank),
    F(FSCLTX, 43, kNone, Fill::kOpenBlank, "", 43),
    F(FSCATP, 1, kNone, Fill::kOpenBlank, "", 1),
    F(FSCAUT, 40, 20, Fill::kOpenBlank, "", 40),
    F(FSCRSN, 1, kNone, Fill::kOpenBlank, "", 1),
    F(FSSRDT, 8, kNone, Fill::kOpenBlank),
    F(FSCTLN, 15, 20, Fill::kOpenBlank, "", 20),
    F(FSDWNG, kNone, 6, Fill::kOpenBlank),
    F(FSDEVT, kNone, 40, Fill::kOpenBlank),
    F(FSCOP, 5, 5),
    F(FSCPYS, 5, 5),
    F(ENCRYP, 1, 1),
    F(FBKGC, 3, kNone),
    F(ONAME, 24, 27, Fill::kBlank, "", 27),
    F(OPHONE, 18, 18, Fill::kBlank, "", 18),
    F(FL, 12, 12),
    F(HL, 6, 6),
    F(NUMI, 3, 3),
    FACT_WITHOUT_BUFFER("LISH", 6, 6),
    FACT_WITHOUT_BUFFER("LI", 10, 10),
    F(NUMS, 3, 3),
    FACT_WITHOUT_BUFFER("LSSH", 4, 4),
    FACT_WITHOUT_BUFFER("LS", 6, 6),
    F(NUMX, 3, kNone),
    F(NUML, kNone, 3),
    // The table of labels needs no layout: its count is 0 where NUML does not exist.
    FACT_WITHOUT_BUFFER("LLSH", 4, 4),
    FACT_WITHOUT_BUFFER("LL", 3, 3),
    F(NUMT, 3, 3),
    FACT_WITHOUT_BUFFER("LTSH", 4, 4),
    FACT_WITHOUT_BUFFER("LT", 5, 5),
    F(NUMDES, 3, 3),
    FACT_WITHOUT_BUFFER("LDSH", 4, 4),
    FACT_WITHOUT_BUFFER("LD", 9, 9),
    F(NUMRES, 3, 3),
    FACT_WITHOUT_BUFFER("LRESH", 4, 4),
    FACT_WITHOUT_BUFFER("LRE", 7, 7),
    F(UDHDL, 5, 5),
    F(UDHOFL, 3, 3),
    FACT_WITHOUT_BUFFER("UDHD", kByLength, kByLength),
    F(XHDL, 5, 5),
    F(XHDLOFL, 3, 3),
    FACT_WITHOUT_BUFFER("XHD", kByLength, kByLength),
};
#undef F

// The fields that the reader ends with a NUL of its own; the others keep what stood behind them.
inline const std::set<std::string> kTerminatedByReader = {"FHDR",  "FBKGC",  "HL",   "NUMI",   "NUMS",
                                                          "NUMX",  "NUML",   "NUMT", "NUMDES", "NUMRES",
                                                          "UDHDL", "UDHOFL", "XHDL", "XHDLOFL"};

}  // namespace unit

#endif  // TAVI_TESTS_UNIT_NTF_HDR_FACTS_H
