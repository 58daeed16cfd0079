// What a HostDrawingContext points to.
#pragma once

#include <array>
#include <cstdint>

#include "TaviHost.h"
#include "TaviVector/PaintAccount.h"

namespace tavi::host {

// How texts are written.
struct TextState {
  uint32_t color = 0x00000000;
  uint32_t box_color = 0x00FFFFFF;
  bool opaque = true;  // whether the boxes behind texts are painted
};

// As many states as a context saves; callers nest a few.
inline constexpr uint32_t kSavedStates = 64;

}  // namespace tavi::host

struct HostDrawingContextObject {
  HostDrawingContextObject* next = nullptr;  // of those that are alive
  HostBitmap* bitmap = nullptr;
  HostPalette selected = nullptr;  // held: see Palette.h
  tavi::host::TextState text;
  uint32_t saved_count = 0;
  tavi::host::vec::PaintAccount painted;
  std::array<tavi::host::TextState, tavi::host::kSavedStates> saved;
};

namespace tavi::host {

// False unless it is a context that is alive, which is found out without looking at what the handle points to.
bool IsContext(HostDrawingContext context) noexcept;

}  // namespace tavi::host
