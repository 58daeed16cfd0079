#include "TaviFile/Codec.h"

namespace tavi::host {

const Codec* Identify(Bytes stream, StreamInfo* info, int32_t* status) noexcept {
  *status = ERR_NOT_SUPPORTED;
  for (const Codec* codec : {&kJpegCodec, &kDeepJpegCodec, &kJpeg2000Codec, &kCgmCodec}) {
    *info = StreamInfo();
    const int32_t answer = codec->identify(stream, info);
    if (answer == SUCCESS) return codec;
    if (answer != ERR_NOT_SUPPORTED) *status = answer;
  }
  *info = StreamInfo();
  return nullptr;
}

}  // namespace tavi::host
