// Counts what is alive, and knows in debug builds where each live thing was made.
#pragma once

#include <cstdint>

namespace tavi::host {

enum class LiveKind : uint8_t {
  kMemory,
  kTemp,
  kPalette,
  kContext,
  kBitmap,
  kFile,
  kVector,
  kGlobal,
  kTracked
};
inline constexpr int kLiveKinds = 9;

// The caller's source line and unit, as the operations receive them.
struct Origin {
  int32_t line = 0;
  const wchar_t* unit = nullptr;
};

void NoteMade(LiveKind kind, const void* object, Origin origin) noexcept;
void NoteGone(LiveKind kind, const void* object) noexcept;

}  // namespace tavi::host
