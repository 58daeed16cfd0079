#include <cstdio>
#include <mutex>

#include "TaviHost.h"

namespace {

template <typename Sink>
struct SinkSlot {
  Sink sink = nullptr;
  void* user = nullptr;
};

std::mutex g_mutex;
SinkSlot<HostMessageSink> g_message;
SinkSlot<HostDebugSink> g_debug;

// A copy: the sink runs without the lock and may set another one.
template <typename Sink>
SinkSlot<Sink> Current(const SinkSlot<Sink>& slot) {
  const std::lock_guard lock(g_mutex);
  return slot;
}

}  // namespace

void HostSetMessageSink(HostMessageSink sink, void* user) {
  const std::lock_guard lock(g_mutex);
  g_message = {sink, user};
}

void HostSetDebugSink(HostDebugSink sink, void* user) {
  const std::lock_guard lock(g_mutex);
  g_debug = {sink, user};
}

int32_t MessageBoxA(void*, const char* text, const char* caption, uint32_t) {
  const char* const shown_text = text != nullptr ? text : "";
  const char* const shown_caption = caption != nullptr ? caption : "";
  const auto slot = Current(g_message);
  if (slot.sink != nullptr) {
    slot.sink(shown_text, shown_caption, slot.user);
  } else {
    std::fprintf(stderr, "%s: %s\n", shown_caption, shown_text);
  }
  return 1;
}

void OutputDebugStringA(const char* text) {
  const auto slot = Current(g_debug);
  if (slot.sink != nullptr && text != nullptr) slot.sink(text, slot.user);
}
