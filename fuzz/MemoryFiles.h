// Files in memory in the place of the host's: the input under its name, and what is saved.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavi_fuzz {

inline constexpr wchar_t kInput[] = L"input";
inline constexpr wchar_t kOutput[] = L"output";

// What kInput holds from now on. The bytes must outlive their use.
void SetInput(const uint8_t* data, size_t size);
// What was last written under any name; it can be read back under kOutput.
const std::vector<uint8_t>& Output();

}  // namespace tavi_fuzz
