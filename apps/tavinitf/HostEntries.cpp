#include "HostEntries.h"

namespace tavinitf {
namespace {

// fltLoad wants a third entry to be there and never calls it.
void NeverCalled() {}

void DropMessage(const char*, const char*, void*) {}

}  // namespace

void SilenceHostMessages() {
  HostSetMessageSink(DropMessage, nullptr);
}

void SetHostEntries(FilterLoadContext& context) {
  context.load_memory = HostLoadMemory;
  context.set_load_hook = HostSetLoadHook;
  context.third_entry = NeverCalled;
}

}  // namespace tavinitf
