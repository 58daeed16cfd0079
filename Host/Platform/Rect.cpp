#include "TaviHost.h"

int32_t SetRect(HostRect* rect, int32_t left, int32_t top, int32_t right, int32_t bottom) {
  if (rect == nullptr) return 0;
  *rect = {left, top, right, bottom};
  return 1;
}
