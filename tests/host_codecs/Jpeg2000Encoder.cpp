#include "Jpeg2000Encoder.h"

#include <openjpeg.h>

#include <algorithm>
#include <cstring>

namespace tavi_test {
namespace {

struct Target {
  Stream bytes;
  size_t at = 0;
};

OPJ_SIZE_T Read(void* buffer, OPJ_SIZE_T size, void* user) {
  auto* const target = static_cast<Target*>(user);
  const OPJ_SIZE_T count = std::min(size, target->bytes.size() - target->at);
  if (count == 0) return static_cast<OPJ_SIZE_T>(-1);
  std::memcpy(buffer, target->bytes.data() + target->at, count);
  target->at += count;
  return count;
}

OPJ_SIZE_T Write(void* buffer, OPJ_SIZE_T size, void* user) {
  auto* const target = static_cast<Target*>(user);
  if (target->bytes.size() < target->at + size) target->bytes.resize(target->at + size);
  std::memcpy(target->bytes.data() + target->at, buffer, size);
  target->at += size;
  return size;
}

OPJ_OFF_T Skip(OPJ_OFF_T count, void* user) {
  static_cast<Target*>(user)->at += static_cast<size_t>(count);
  return count;
}

OPJ_BOOL Seek(OPJ_OFF_T to, void* user) {
  static_cast<Target*>(user)->at = static_cast<size_t>(to);
  return OPJ_TRUE;
}

opj_stream_t* OpenTarget(Target* target, bool reads) {
  opj_stream_t* const stream = opj_stream_create(1 << 16, reads ? OPJ_TRUE : OPJ_FALSE);
  opj_stream_set_user_data(stream, target, nullptr);
  opj_stream_set_user_data_length(stream, target->bytes.size());
  opj_stream_set_read_function(stream, Read);
  opj_stream_set_write_function(stream, Write);
  opj_stream_set_skip_function(stream, Skip);
  opj_stream_set_seek_function(stream, Seek);
  return stream;
}

OPJ_COLOR_SPACE SpaceOf(J2kColor color) {
  switch (color) {
    case J2kColor::kRgb:
      return OPJ_CLRSPC_SRGB;
    case J2kColor::kGrey:
      return OPJ_CLRSPC_GRAY;
    case J2kColor::kYcc:
      return OPJ_CLRSPC_SYCC;
    default:
      return OPJ_CLRSPC_UNSPECIFIED;
  }
}

uint32_t Divide(uint32_t value, uint32_t step) {
  return (value + step - 1) / step;
}

opj_image_t* MakeImage(const Pixels& pixels, const J2kSettings& settings) {
  const uint32_t right = settings.left + pixels.width;
  const uint32_t bottom = settings.top + pixels.height;
  std::vector<opj_image_cmptparm_t> parameters(pixels.channels);
  for (uint32_t c = 0; c < pixels.channels; ++c) {
    opj_image_cmptparm_t& parameter = parameters[c];
    std::memset(&parameter, 0, sizeof parameter);
    parameter.dx = parameter.dy = settings.step_of_all * (c == 1 || c == 2 ? settings.step : 1);
    parameter.w = Divide(right, parameter.dx) - Divide(settings.left, parameter.dx);
    parameter.h = Divide(bottom, parameter.dy) - Divide(settings.top, parameter.dy);
    parameter.prec = settings.bits;
    parameter.sgnd = settings.is_signed ? 1 : 0;
  }
  opj_image_t* const image = opj_image_create(pixels.channels, parameters.data(), SpaceOf(settings.color));
  image->x0 = settings.left;
  image->y0 = settings.top;
  image->x1 = right;
  image->y1 = bottom;
  const int lift = settings.is_signed ? 1 << (settings.bits - 1) : 0;
  for (uint32_t c = 0; c < pixels.channels; ++c) {
    const opj_image_comp_t& component = image->comps[c];
    const uint32_t first_x = Divide(settings.left, component.dx) * component.dx - settings.left;
    const uint32_t first_y = Divide(settings.top, component.dy) * component.dy - settings.top;
    for (uint32_t y = 0; y < component.h; ++y) {
      for (uint32_t x = 0; x < component.w; ++x) {
        component.data[size_t{y} * component.w + x] =
            pixels.At(first_x + x * component.dx, first_y + y * component.dy, c) - lift;
      }
    }
  }
  return image;
}

void PutNumber(Stream* stream, uint32_t value, uint32_t size) {
  for (uint32_t i = size; i-- > 0;) stream->push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void PutBox(Stream* stream, const char* type, const Stream& content) {
  PutNumber(stream, static_cast<uint32_t>(content.size()) + 8, 4);
  stream->insert(stream->end(), type, type + 4);
  stream->insert(stream->end(), content.begin(), content.end());
}

}  // namespace

Stream EncodeJpeg2000(const Pixels& pixels, const J2kSettings& settings) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.tcp_mct = settings.mix ? 1 : 0;
  parameters.irreversible = settings.ratio != 0 ? 1 : 0;
  parameters.numresolution = settings.levels + 1;
  parameters.tcp_numlayers = settings.layers;
  parameters.cp_disto_alloc = 1;
  for (int i = 0; i < settings.layers; ++i) {
    parameters.tcp_rates[i] = static_cast<float>(i + 1 == settings.layers ? settings.ratio : 100.0 / (i + 1));
  }
  if (settings.tile != 0) {
    parameters.tile_size_on = OPJ_TRUE;
    parameters.cp_tdx = parameters.cp_tdy = static_cast<int>(settings.tile);
  }
  opj_image_t* const image = MakeImage(pixels, settings);
  opj_codec_t* const codec = opj_create_compress(settings.jp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K);
  Target target;
  opj_stream_t* const stream = OpenTarget(&target, false);
  const bool done = opj_setup_encoder(codec, &parameters, image) &&
                    opj_start_compress(codec, image, stream) && opj_encode(codec, stream) &&
                    opj_end_compress(codec, stream);
  EXPECT_TRUE(done);
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
  opj_image_destroy(image);
  return target.bytes;
}

Stream EncodePaletteJp2(const Pixels& indices, const std::vector<std::vector<uint8_t>>& palette) {
  const Stream codestream = EncodeJpeg2000(indices, {.levels = 2});
  Stream size;
  PutNumber(&size, indices.height, 4);
  PutNumber(&size, indices.width, 4);
  PutNumber(&size, 1, 2);
  size.insert(size.end(), {7, 7, 0, 0});
  Stream table;
  PutNumber(&table, static_cast<uint32_t>(palette.size()), 2);
  table.insert(table.end(), {3, 7, 7, 7});
  for (const std::vector<uint8_t>& entry : palette) table.insert(table.end(), entry.begin(), entry.end());
  Stream header;
  PutBox(&header, "ihdr", size);
  PutBox(&header, "colr", {1, 0, 0, 0, 0, 0, 16});
  PutBox(&header, "pclr", table);
  PutBox(&header, "cmap", {0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 2});
  Stream whole;
  PutBox(&whole, "jP  ", {0x0D, 0x0A, 0x87, 0x0A});
  PutBox(&whole, "ftyp", {'j', 'p', '2', ' ', 0, 0, 0, 0, 'j', 'p', '2', ' '});
  PutBox(&whole, "jp2h", header);
  PutBox(&whole, "jp2c", codestream);
  return whole;
}

Pixels DecodeJpeg2000(const Stream& bytes) {
  Target target{bytes};
  opj_stream_t* const stream = OpenTarget(&target, true);
  opj_codec_t* const codec = opj_create_decompress(bytes[0] == 0xFF ? OPJ_CODEC_J2K : OPJ_CODEC_JP2);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  opj_image_t* image = nullptr;
  const bool done = opj_setup_decoder(codec, &parameters) && opj_read_header(stream, codec, &image) &&
                    opj_decode(codec, stream, image);
  EXPECT_TRUE(done);
  Pixels pixels;
  if (done) {
    pixels = Pixels(image->comps[0].w, image->comps[0].h, image->numcomps);
    for (uint32_t c = 0; c < pixels.channels; ++c) {
      const opj_image_comp_t& component = image->comps[c];
      const int lift = component.sgnd != 0 ? 1 << (component.prec - 1) : 0;
      for (size_t i = 0; i < size_t{pixels.width} * pixels.height; ++i) {
        pixels.samples[i * pixels.channels + c] = static_cast<uint16_t>(component.data[i] + lift);
      }
    }
  }
  opj_image_destroy(image);
  opj_destroy_codec(codec);
  opj_stream_destroy(stream);
  return pixels;
}

}  // namespace tavi_test
