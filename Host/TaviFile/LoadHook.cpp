#include "TaviFile/LoadHook.h"

#include "TaviHost.h"

namespace tavi::host {
namespace {

constexpr uint32_t kPlaces = 64;
constexpr uint32_t kFormatPlace = 1;
constexpr uint32_t kWidthPlace = 2;
constexpr uint32_t kHeightPlace = 3;

struct HookSlot {
  HostLoadHook hook = nullptr;
  void* user = nullptr;
};

thread_local HookSlot t_slot;

}  // namespace

bool HasLoadHook() noexcept {
  return t_slot.hook != nullptr;
}

int32_t AskLoadHook(FaxLayout* layout) noexcept {
  const HookSlot slot = t_slot;  // the hook may install another one
  uint32_t places[kPlaces] = {};
  const int32_t status = slot.hook(places, slot.user);
  if (status != SUCCESS) return status;
  *layout = {places[kFormatPlace], places[kWidthPlace], places[kHeightPlace]};
  const bool is_fax = layout->format == kFormatFaxG3OneD || layout->format == kFormatFaxG3TwoD ||
                      layout->format == kFormatFaxG4;
  return is_fax ? SUCCESS : ERR_NOT_SUPPORTED;
}

}  // namespace tavi::host

HostLoadHook HostSetLoadHook(HostLoadHook hook, void* user) {
  const HostLoadHook before = tavi::host::t_slot.hook;
  tavi::host::t_slot = {hook, user};
  return before;
}
