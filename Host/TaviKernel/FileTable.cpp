#include "TaviKernel/FileTable.h"

#include <mutex>
#include <new>
#include <shared_mutex>
#include <utility>
#include <vector>

namespace tavi::host {
namespace {

// The slot's number stands in the low half of a handle, the slot's generation in the high half.
struct Slot {
  uint32_t generation = 1;
  std::shared_ptr<OpenFile> file;
};

struct Table {
  std::shared_mutex mutex;
  std::vector<Slot> slots;
  std::vector<uint32_t> free_slots;

  Slot* Find(int64_t handle) {
    if (handle < 0) return nullptr;
    const auto number = static_cast<uint64_t>(handle) & 0xFFFFFFFFu;
    if (number >= slots.size()) return nullptr;
    Slot& slot = slots[number];
    const bool current = slot.generation == static_cast<uint64_t>(handle) >> 32;
    return current && slot.file != nullptr ? &slot : nullptr;
  }
};

// Never destroyed: files may still be read while the process ends.
Table& Files() {
  alignas(Table) static std::byte memory[sizeof(Table)];
  static Table* const table = new (memory) Table;
  return *table;
}

}  // namespace

int64_t RegisterFile(std::shared_ptr<OpenFile> file) noexcept {
  Table& table = Files();
  const std::lock_guard lock(table.mutex);
  if (table.free_slots.empty()) {
    try {
      // Room for every slot to become free: closing may not need memory.
      table.free_slots.reserve(table.slots.size() + 1);
      table.slots.emplace_back();
    } catch (const std::bad_alloc&) {
      return -1;
    }
    table.free_slots.push_back(static_cast<uint32_t>(table.slots.size() - 1));
  }
  const uint32_t number = table.free_slots.back();
  table.free_slots.pop_back();
  Slot& slot = table.slots[number];
  slot.file = std::move(file);
  return static_cast<int64_t>(static_cast<uint64_t>(slot.generation) << 32 | number);
}

std::shared_ptr<OpenFile> FindFile(int64_t handle) noexcept {
  Table& table = Files();
  const std::shared_lock lock(table.mutex);
  const Slot* const slot = table.Find(handle);
  return slot != nullptr ? slot->file : nullptr;
}

std::shared_ptr<OpenFile> UnregisterFile(int64_t handle) noexcept {
  Table& table = Files();
  const std::lock_guard lock(table.mutex);
  Slot* const slot = table.Find(handle);
  if (slot == nullptr) return nullptr;
  slot->generation = slot->generation == 0x7FFFFFFF ? 1 : slot->generation + 1;
  table.free_slots.push_back(static_cast<uint32_t>(static_cast<uint64_t>(handle) & 0xFFFFFFFFu));
  return std::exchange(slot->file, nullptr);
}

}  // namespace tavi::host
