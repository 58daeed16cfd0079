// Reads a metafile, paints it, writes it as a metafile and reads that again.
#include "Drawings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  {
    const tavi_fuzz::Drawing drawing(data, size);
    HostBitmap bitmap = {};
    HostCreateBitmap(&bitmap, sizeof bitmap, 1, 200, 150, 24, 1, nullptr, 1, nullptr, 0);
    HostDrawingContext context = HostCreateBitmapDC(&bitmap);
    const HostRect mirrored = {180, 140, -20, 5};
    const HostRect one_to_one = {10, 10, 10, 10};
    HostVecPaint(context, drawing.get(), 200, 135, 0, 0, &mirrored, 0, 0);
    HostVecPaint(context, drawing.get(), 0, 0, 0, 0, &one_to_one, 0, 0);
    HostDeleteBitmapDC(context);
    HostFreeBitmap(&bitmap);
    HostGlobalMemory block = nullptr;
    uint64_t written = 0;
    if (HostVecSaveMemory(&block, drawing.get(), 62, &written, nullptr) == SUCCESS) {
      const tavi_fuzz::Drawing again(static_cast<const uint8_t*>(GlobalLock(block)), written);
      GlobalUnlock(block);
    }
    HostGlobalFree(block, 0, nullptr);
  }
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}
