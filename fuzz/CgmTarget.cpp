// Reads a metafile.
#include "Drawings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  {
    const tavi_fuzz::Drawing drawing(data, size);
    double smallest[3];
    double largest[3];
    HostVecGetExtents(drawing.get(), smallest, largest);
  }
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}
