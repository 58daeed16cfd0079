// Field texts: numbers in and out of fixed-width fields, and the count of tagged records.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi {

// Converts as atoi does (leading white space, a sign, digits up to the first other character), within `width`
// characters and up to a NUL. A value beyond 32 bits gives the nearest 32-bit one.
int32_t ParseInteger(const char* text, size_t width);

// The number in a field's buffer.
template <size_t kSize>
int32_t NumberOf(const char (&buffer)[kSize]) {
  return ParseInteger(buffer, kSize - 1);
}

// Converts as atof does, whatever the process's locale: leading white space, a sign, a decimal number.
double ParseReal(const char* text, size_t width);

// Two signed halves of five characters (ILOC, SLOC, SBND1, SBND2): a half that begins with "-" is the
// negative of the rest.
struct LocationPair {
  int32_t first;
  int32_t second;
};
LocationPair ParseLocationPair(const char* ten_characters);

// Writes `value` right-justified with "0" into `width` characters and a NUL behind them. A value of more
// characters keeps its first ones. Always SUCCESS.
int32_t FormatNumericField(char* destination, uint32_t width, int32_t value);

// Writes `text` left-justified with blanks into `width` characters and a NUL behind them.
// ERR_INVALID_PARAMETER, and nothing changed, for a null destination or a longer text.
int32_t SetFixedText(char* destination, uint32_t width, const char* text);

// The number of records (tag 6, length 5, data) in an extended data block. A record that runs past the end
// counts; a length that is no number, or negative, counts as 0.
int32_t CountTres(const void* block, uint32_t length);

// Big-endian numbers as they stand in a file.
inline uint32_t ReadBig16(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) << 8 | p[1];
}
inline uint32_t ReadBig32(const uint8_t* p) {
  return ReadBig16(p) << 16 | ReadBig16(p + 2);
}

inline void WriteBig16(uint8_t* p, uint32_t value) {
  p[0] = static_cast<uint8_t>(value >> 8);
  p[1] = static_cast<uint8_t>(value);
}
inline void WriteBig32(uint8_t* p, uint32_t value) {
  WriteBig16(p, value >> 16);
  WriteBig16(p + 2, value);
}

// Sums and products as the format's 32-bit arithmetic has them: they wrap.
inline int32_t WrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t WrapSubtract(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
inline int32_t WrapMultiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

}  // namespace tavi
