// The setters of image subheader fields whose rules go beyond their kind. The rows of the image subheader name
// them; each takes the row that it serves.
//
// None of them sees to it that the fields fit together: a subheader may say anything afterwards, and whoever
// decodes or writes it looks for himself.
#pragma once

#include <cstdint>

#include "ImSubHdr.h"

namespace tavi {

using ImageRow = FieldRow<ImSubHdr>;

// First character L or R, which counts also when the text is too long.
int32_t SetPjust(ImSubHdr& record, const ImageRow& row, const char* text);

// These two decide whether IGEOLO and COMRAT are in the file. The document's FL and the image's length in its
// working list follow at once.
//
// ICORDS: any character. Only a blank has no corners, in both layouts, also where the file has them by another
// rule.
int32_t SetIcords(ImSubHdr& record, const ImageRow& row, const char* text);
// IC: one of the known texts, whole.
int32_t SetIc(ImSubHdr& record, const ImageRow& row, const char* text);

// Any text that fits; one that is no known rate resets the code.
int32_t SetComrat(ImSubHdr& record, const ImageRow& row, const char* text);
// A number, or "/" and the divisor, which count also when the text is too long.
int32_t SetImag(ImSubHdr& record, const ImageRow& row, const char* text);

// NBANDS: makes new tables of that many bands, without roles, subcategories and look-up tables. A count that
// XBANDS reaches yields to it, and then there are fewer bands in the tables than the count says.
// ERR_NO_MEMORY leaves the tables made so far.
int32_t SetBandCount(ImSubHdr& record, const ImageRow& row, uint32_t count);

// ILOC: row and column. Digits that exceed a half run over to the left: those of the column into the row's half,
// those of the row are lost.
int32_t SetIloc(ImSubHdr& record, const ImageRow& row, int32_t location_row, int32_t location_column);

// The role of one band, by a text of IREPBAND. ERR_INVALID_PARAMETER for a band that is not there and a text that
// names no role.
int32_t SetBandRole(ImSubHdr& record, uint32_t band, const char* text);

}  // namespace tavi
