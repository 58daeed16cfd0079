// The tool as a host of the library: what a program owes the filter entry points besides its own data.
#pragma once

#include "TaviNitf.h"

namespace tavinitf {

// Refusals reach the user as one line of ours; the host's message boxes would repeat them.
void SilenceHostMessages();

// Puts the three entries that fltLoad asks for into the context.
void SetHostEntries(FilterLoadContext& context);

}  // namespace tavinitf
