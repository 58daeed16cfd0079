#include "HostEntries.h"

namespace tavinitf {
namespace {

// The host has no decoders for coded pictures yet, so these entries refuse every one. They give way to the
// host's own HostLoadMemory and HostSetLoadHook as soon as it has them.
int32_t RefuseCodedPicture(const void*, HostBitmap*, uint64_t, uint32_t, uint32_t, uint64_t,
                           HostLoadFlagsRecord*, HostFileInfo*) {
  return ERR_NOT_SUPPORTED;
}

HostLoadHook TakeNoHook(HostLoadHook, void*) {
  return nullptr;
}

// fltLoad wants a third entry to be there and never calls it.
void NeverCalled() {}

void DropMessage(const char*, const char*, void*) {}

}  // namespace

void SilenceHostMessages() {
  HostSetMessageSink(DropMessage, nullptr);
}

void SetHostEntries(FilterLoadContext& context) {
  context.load_memory = RefuseCodedPicture;
  context.set_load_hook = TakeNoHook;
  context.third_entry = NeverCalled;
}

}  // namespace tavinitf
