// The fields that the library's public header records hold: their form, and whether a record's setter takes a value.
#pragma once

#include <cstdint>
#include <string>

#include "Document.h"
#include "Selector.h"

namespace tavinitf {

enum class FieldForm : uint8_t { kText, kDate, kNumber, kPair };

// kText for a field that no record holds.
FieldForm FormOf(SegmentKind kind, const std::string& field);

// Gets the record of the header, puts the field's new bytes in, hands the record to its setter. False when the setter
// refuses this value and not the record as it was. The document is to be thrown away: a setter takes all fields of its
// record and spoils some of them on the way.
bool SetterTakes(const Document& document, const Selector& segment, const std::string& field,
                 const std::string& bytes);

}  // namespace tavinitf
