#include "TaviKernel/Tracking.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>

#include "TaviHost.h"
#include "TaviKernel/WideText.h"

namespace tavi::host {
namespace {

#if defined(NDEBUG)
constexpr bool kKeepOrigins = false;
#else
constexpr bool kKeepOrigins = true;
#endif

constexpr std::array<const char*, kLiveKinds> kKindNames = {
    "memory block",   "temporary block",     "palette",       "drawing context", "bitmap", "open file",
    "vector drawing", "global memory block", "tracked object"};

std::array<std::atomic<uint64_t>, kLiveKinds> g_counts{};

struct Key {
  const void* object;
  int32_t kind;
  bool operator==(const Key&) const = default;
};

struct KeyHash {
  size_t operator()(const Key& key) const noexcept {
    return std::hash<const void*>()(key.object) ^ (static_cast<size_t>(key.kind) << 1);
  }
};

// Live objects and where they were made. It is never destroyed: blocks are still freed while the process
// ends.
class OriginTable {
 public:
  static OriginTable& Of(LiveKind kind) {
    alignas(OriginTable) static std::byte memory[2][sizeof(OriginTable)];
    static OriginTable* const tables[2] = {new (memory[0]) OriginTable, new (memory[1]) OriginTable};
    return *tables[kind == LiveKind::kTracked ? 1 : 0];
  }

  // False when the object was known already, or there is no memory to note it.
  bool Add(Key key, Origin origin) noexcept {
    const std::lock_guard lock(mutex_);
    try {
      return entries_.insert_or_assign(key, origin).second;
    } catch (const std::exception&) {
      return false;
    }
  }

  bool Remove(Key key) noexcept {
    const std::lock_guard lock(mutex_);
    return entries_.erase(key) != 0;
  }

  template <typename Visitor>
  void ForEach(Visitor&& visit) {
    const std::lock_guard lock(mutex_);
    for (const auto& [key, origin] : entries_) visit(key, origin);
  }

 private:
  std::mutex mutex_;
  std::unordered_map<Key, Origin, KeyHash> entries_;
};

void PrintLine(HostDebugSink sink, void* user, const char* text) {
  if (sink != nullptr) {
    sink(text, user);
  } else {
    std::fputs(text, stderr);
  }
}

void PrintOrigins(LiveKind table, HostDebugSink sink, void* user) {
  // Collected first: a sink may call back into the host.
  std::string lines;
  OriginTable::Of(table).ForEach([&](const Key& key, const Origin& origin) {
    char text[96];
    const bool tracked = table == LiveKind::kTracked;
    std::snprintf(text, sizeof text, "%s of kind %d", kKindNames[kLiveKinds - 1], key.kind);
    lines += tracked ? text : kKindNames[static_cast<size_t>(key.kind)];
    std::snprintf(text, sizeof text, " at %p", key.object);
    lines += text;
    std::string unit;
    if (origin.unit != nullptr && ToUtf8(origin.unit, &unit)) lines += ", made in " + unit;
    if (origin.line != 0) lines += ", line " + std::to_string(origin.line);
    lines += '\n';
  });
  size_t start = 0;
  for (size_t end; (end = lines.find('\n', start)) != std::string::npos; start = end + 1) {
    PrintLine(sink, user, lines.substr(start, end + 1 - start).c_str());
  }
}

void PrintCounts(HostDebugSink sink, void* user) {
  for (size_t kind = 0; kind + 1 < kLiveKinds; ++kind) {
    const uint64_t count = g_counts[kind].load();
    if (count == 0) continue;
    char text[96];
    std::snprintf(text, sizeof text, "%s: %llu alive\n", kKindNames[kind],
                  static_cast<unsigned long long>(count));
    PrintLine(sink, user, text);
  }
}

}  // namespace

void NoteMade(LiveKind kind, const void* object, Origin origin) noexcept {
  g_counts[static_cast<size_t>(kind)].fetch_add(1, std::memory_order_relaxed);
  if constexpr (kKeepOrigins) OriginTable::Of(kind).Add({object, static_cast<int32_t>(kind)}, origin);
}

void NoteGone(LiveKind kind, const void* object) noexcept {
  g_counts[static_cast<size_t>(kind)].fetch_sub(1, std::memory_order_relaxed);
  if constexpr (kKeepOrigins) OriginTable::Of(kind).Remove({object, static_cast<int32_t>(kind)});
}

}  // namespace tavi::host

using tavi::host::LiveKind;

// Announced objects are kept in a table in every build: callers may take back what they never announced, or
// take it back twice, and a bare count would then be wrong.
void HostTrackAdd(int32_t kind, const void* object, int32_t line, const wchar_t* unit) {
  using namespace tavi::host;
  if (object == nullptr) return;
  if (OriginTable::Of(LiveKind::kTracked).Add({object, kind}, {line, unit})) {
    g_counts[static_cast<size_t>(LiveKind::kTracked)].fetch_add(1, std::memory_order_relaxed);
  }
}

void HostTrackRemove(int32_t kind, const void* object, int32_t, const wchar_t*) {
  using namespace tavi::host;
  if (OriginTable::Of(LiveKind::kTracked).Remove({object, kind})) {
    g_counts[static_cast<size_t>(LiveKind::kTracked)].fetch_sub(1, std::memory_order_relaxed);
  }
}

uint64_t HostLiveObjects(void) {
  uint64_t sum = 0;
  for (const auto& count : tavi::host::g_counts) sum += count.load();
  return sum;
}

uint64_t HostReportLeaks(HostDebugSink sink, void* user) {
  using namespace tavi::host;
  const uint64_t alive = HostLiveObjects();
  try {
    if constexpr (kKeepOrigins) {
      PrintOrigins(LiveKind::kMemory, sink, user);
    } else {
      PrintCounts(sink, user);
    }
    PrintOrigins(LiveKind::kTracked, sink, user);
  } catch (const std::exception&) {
    PrintLine(sink, user, "no memory for the leak report\n");
  }
  return alive;
}
