// JPEG 2000 by OpenJPEG, which reads the codestream where it stands in memory.
#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "TaviFile/Codec.h"
#include "TaviFile/Jpeg2000Header.h"
#include "TaviFile/Picture.h"

namespace tavi::host {
namespace {

struct CodecDeleter {
  void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct StreamDeleter {
  void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct ImageDeleter {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using CodecOwner = std::unique_ptr<opj_codec_t, CodecDeleter>;
using StreamOwner = std::unique_ptr<opj_stream_t, StreamDeleter>;
using ImageOwner = std::unique_ptr<opj_image_t, ImageDeleter>;

// ---- The stream in memory

// The stream up to its codestream's end, but for the lengths of tile-parts that run beyond that: the decoder would ask
// for as much memory as they say. Data hold no FF 90; what looks like a tile-part in a comment may be changed as well.
class MemorySource {
 public:
  MemorySource(const Jpeg2000Stream& picture, Bytes stream)
      : bytes_(stream.first(static_cast<size_t>(picture.codestream.data() - stream.data()) +
                            picture.codestream.size())) {}

  uint64_t size() const { return bytes_.size(); }
  uint64_t left() const { return bytes_.size() - at_; }
  void MoveTo(uint64_t at) { at_ = at; }
  void Skip(uint64_t count) { at_ += count; }
  void Read(uint8_t* buffer, uint64_t count) {
    std::memcpy(buffer, bytes_.data() + at_, count);
    ShortenParts(buffer, count);
    at_ += count;
  }

 private:
  void ShortenParts(uint8_t* buffer, uint64_t count) const {
    constexpr std::array<uint8_t, 4> kStart = {0xFF, 0x90, 0x00, 0x0A};  // the marker and its own length
    constexpr uint64_t kLengthAt = 6;                                    // behind the tile's number
    constexpr uint64_t kLengthEnd = kLengthAt + 4;
    const uint64_t window_end = at_ + count;
    uint64_t part = at_ - std::min(at_, kLengthEnd - 1);
    while (true) {
      const auto found =
          std::search(bytes_.begin() + static_cast<ptrdiff_t>(part),
                      bytes_.begin() + static_cast<ptrdiff_t>(window_end), kStart.begin(), kStart.end());
      part = static_cast<uint64_t>(found - bytes_.begin());
      if (part >= window_end || bytes_.size() - part < kLengthEnd) return;
      const uint64_t most = bytes_.size() - part;
      uint64_t claimed = 0;
      for (uint64_t i = kLengthAt; i < kLengthEnd; ++i) claimed = claimed << 8 | bytes_[part + i];
      for (uint64_t i = kLengthAt; claimed > most && i < kLengthEnd; ++i) {
        const uint64_t place = part + i;
        if (place >= at_ && place < window_end) {
          buffer[place - at_] = static_cast<uint8_t>(most >> 8 * (kLengthEnd - 1 - i));
        }
      }
      part += kStart.size();
    }
  }

  Bytes bytes_;
  uint64_t at_ = 0;
};

OPJ_SIZE_T ReadSource(void* buffer, OPJ_SIZE_T size, void* user) {
  auto* const source = static_cast<MemorySource*>(user);
  const uint64_t count = std::min<uint64_t>(size, source->left());
  if (count == 0) return static_cast<OPJ_SIZE_T>(-1);  // the library's sign for the end
  source->Read(static_cast<uint8_t*>(buffer), count);
  return count;
}

OPJ_OFF_T SkipSource(OPJ_OFF_T count, void* user) {
  auto* const source = static_cast<MemorySource*>(user);
  if (count < 0) return -1;
  const uint64_t moved = std::min(static_cast<uint64_t>(count), source->left());
  if (moved == 0 && count != 0) return -1;
  source->Skip(moved);
  return static_cast<OPJ_OFF_T>(moved);
}

OPJ_BOOL SeekSource(OPJ_OFF_T to, void* user) {
  auto* const source = static_cast<MemorySource*>(user);
  if (to < 0 || static_cast<uint64_t>(to) > source->size()) return OPJ_FALSE;
  source->MoveTo(static_cast<uint64_t>(to));
  return OPJ_TRUE;
}

StreamOwner OpenSource(MemorySource* source) {
  constexpr OPJ_SIZE_T kLargestBuffer = OPJ_SIZE_T{1} << 16;  // longer reads go past it
  StreamOwner stream(opj_stream_create(kLargestBuffer, OPJ_TRUE));
  if (stream == nullptr) return stream;
  opj_stream_set_user_data(stream.get(), source, nullptr);
  opj_stream_set_user_data_length(stream.get(), source->size());
  opj_stream_set_read_function(stream.get(), ReadSource);
  opj_stream_set_skip_function(stream.get(), SkipSource);
  opj_stream_set_seek_function(stream.get(), SeekSource);
  return stream;
}

// ---- Decoding

// Threads cost more than they bring in small pictures.
constexpr uint64_t kSamplesWorthThreads = uint64_t{1} << 18;
constexpr int kMostThreads = 16;

// The components to be decoded, when not all are: ascending, each once.
struct Selection {
  std::array<uint32_t, 3> components{};
  uint32_t count = 0;  // 0: all

  // The place that a component of the codestream has among those decoded.
  uint32_t PlaceOf(uint32_t component) const {
    if (count == 0) return component;
    const auto* const end = components.data() + count;
    return static_cast<uint32_t>(std::find(components.data(), end, component) - components.data());
  }
};

// Components can be left out when nothing mixes them.
Selection SelectComponents(const Jpeg2000Stream& picture, const DecodeRequest& request) {
  Selection selection;
  const bool mixed = picture.has_component_transform || picture.palette_columns != 0 ||
                     (picture.is_jp2 && !request.as_bands());
  if (picture.components <= 3 || mixed) return selection;
  selection.components = ChosenBands(request, picture.components);
  std::sort(selection.components.begin(), selection.components.end());
  const auto* const end = std::unique(selection.components.begin(), selection.components.end());
  selection.count = static_cast<uint32_t>(end - selection.components.begin());
  return selection;
}

uint64_t HeldSamples(const Jpeg2000Stream& picture, const Selection& selection) {
  if (selection.count != 0) return picture.largest_component * selection.count;
  return std::max(picture.coded_samples, picture.largest_component * picture.palette_columns);
}

int32_t DecodeImage(const Jpeg2000Stream& picture, Bytes stream, const Selection& selection,
                    ImageOwner* image) {
  MemorySource source(picture, picture.is_jp2 ? stream : picture.codestream);
  const StreamOwner reader = OpenSource(&source);
  const CodecOwner codec(opj_create_decompress(picture.is_jp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
  if (reader == nullptr || codec == nullptr) return ERR_NO_MEMORY;
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  if (!opj_setup_decoder(codec.get(), &parameters)) return ERR_NO_MEMORY;
  // A tile that ends early is shown as far as it goes, with no more than a warning.
  opj_decoder_set_strict_mode(codec.get(), OPJ_FALSE);
  if (HeldSamples(picture, selection) >= kSamplesWorthThreads && opj_has_thread_support()) {
    opj_codec_set_threads(codec.get(), std::min(opj_get_num_cpus(), kMostThreads));
  }
  opj_image_t* made = nullptr;
  const bool has_header = opj_read_header(reader.get(), codec.get(), &made) != OPJ_FALSE;
  image->reset(made);
  if (!has_header || made == nullptr) return ERR_FILE_FORMAT;
  if (selection.count != 0 &&
      !opj_set_decoded_components(codec.get(), selection.count, selection.components.data(), OPJ_FALSE)) {
    return ERR_FILE_FORMAT;
  }
  return opj_decode(codec.get(), reader.get(), made) ? SUCCESS : ERR_FILE_FORMAT;
}

// ---- From components to rows

enum class ColorSpace : uint8_t { kAsIs, kYcc, kExtendedYcc, kCmyk };

uint32_t Full(uint32_t bits) {
  return (1u << bits) - 1;
}

// One component as rows of the picture's width: unsigned, of one range, and as wide as the picture.
class ComponentReader {
 public:
  ComponentReader(const Jpeg2000Stream& picture, const opj_image_comp_t& component, uint32_t target_bits)
      : component_(component), grid_(picture.grid), width_(picture.width), target_bits_(target_bits) {}

  void Read(uint32_t y, int32_t* out) const {
    const uint64_t row =
        Place(GridPoint(grid_.top, grid_.step_down, y), component_.dy, component_.y0, component_.h);
    const OPJ_INT32* const from = component_.data + row * component_.w;
    const int32_t lift = component_.sgnd != 0 ? 1 << (component_.prec - 1) : 0;
    const int32_t most = static_cast<int32_t>(Full(component_.prec)) - lift;
    if (component_.dx == grid_.step_across && component_.w == width_) {
      for (uint32_t x = 0; x < width_; ++x) out[x] = std::clamp(from[x], -lift, most) + lift;
    } else {
      for (uint32_t x = 0; x < width_; ++x) {
        const uint64_t point = GridPoint(grid_.left, grid_.step_across, x);
        out[x] =
            std::clamp(from[Place(point, component_.dx, component_.x0, component_.w)], -lift, most) + lift;
      }
    }
    if (component_.prec != target_bits_) Stretch(out);
  }

 private:
  // The point of the reference grid that a pixel stands at.
  static uint64_t GridPoint(uint32_t start, uint32_t step, uint32_t pixel) {
    return ((uint64_t{start} + step - 1) / step + pixel) * step;
  }
  // The sample that covers the point.
  static uint64_t Place(uint64_t point, uint32_t step, uint32_t first, uint32_t count) {
    const uint64_t sample = point / step;
    return sample <= first ? 0 : std::min<uint64_t>(sample - first, count - 1);
  }

  void Stretch(int32_t* values) const {
    const int64_t from = Full(component_.prec);
    const int64_t to = Full(target_bits_);
    for (uint32_t x = 0; x < width_; ++x)
      values[x] = static_cast<int32_t>((values[x] * to + from / 2) / from);
  }

  const opj_image_comp_t& component_;
  const Jpeg2000Grid& grid_;
  uint32_t width_;
  uint32_t target_bits_;
};

// Coefficients of 65536ths: what the two colour differences add to red, green and blue, and what luminance
// does.
struct YccMatrix {
  int64_t luminance[3];
  int64_t blue_difference[3];
  int64_t red_difference[3];
};
constexpr YccMatrix kYcc{{65536, 65536, 65536}, {0, -22554, 116130}, {91881, -46802, 0}};
constexpr YccMatrix kExtendedYcc{{65536, 65556, 65524}, {-2, -22553, 116133}, {91881, -46800, -1}};

void ConvertYcc(const YccMatrix& matrix, uint32_t bits, uint32_t width, int32_t* const* rows) {
  const int64_t middle = int64_t{1} << (bits - 1);
  const int64_t full = Full(bits);
  for (uint32_t x = 0; x < width; ++x) {
    const int64_t y = rows[0][x];
    const int64_t b = rows[1][x] - middle;
    const int64_t r = rows[2][x] - middle;
    for (uint32_t i = 0; i < 3; ++i) {
      const int64_t value =
          matrix.luminance[i] * y + matrix.blue_difference[i] * b + matrix.red_difference[i] * r;
      rows[i][x] = static_cast<int32_t>(std::clamp<int64_t>((value + 32768) >> 16, 0, full));
    }
  }
}

void ConvertCmyk(uint32_t bits, uint32_t width, int32_t* const* rows) {
  const int64_t full = Full(bits);
  for (uint32_t x = 0; x < width; ++x) {
    const int64_t light = full - rows[3][x];
    for (uint32_t i = 0; i < 3; ++i) {
      rows[i][x] = static_cast<int32_t>(((full - rows[i][x]) * light + full / 2) / full);
    }
  }
}

template <typename Sample>
void StoreChannel(const int32_t* values, uint32_t width, uint32_t step, uint8_t* out) {
  for (uint64_t x = 0; x < width; ++x) {
    const auto sample = static_cast<Sample>(values[x]);
    std::memcpy(out + x * step * sizeof sample, &sample, sizeof sample);
  }
}

// Components that need no change at all, in storage order, straight into a row.
template <typename Sample>
void StorePlain(const OPJ_INT32* first, const OPJ_INT32* second, const OPJ_INT32* third, uint32_t width,
                uint8_t* out) {
  auto* const samples = reinterpret_cast<Sample*>(out);
  for (uint64_t x = 0; x < width; ++x) {
    samples[3 * x] = static_cast<Sample>(first[x]);
    samples[3 * x + 1] = static_cast<Sample>(second[x]);
    samples[3 * x + 2] = static_cast<Sample>(third[x]);
  }
}

template <typename Sample>
void StorePlain(const OPJ_INT32* values, uint32_t width, uint8_t* out) {
  auto* const samples = reinterpret_cast<Sample*>(out);
  for (uint64_t x = 0; x < width; ++x) samples[x] = static_cast<Sample>(values[x]);
}

class ImageWriter {
 public:
  ImageWriter(const Jpeg2000Stream& picture, const DecodeRequest& request, const Selection& selection,
              const opj_image_t& image)
      : picture_(picture),
        request_(request),
        image_(image),
        color_space_(FindColorSpace()),
        channels_(image.numcomps >= 3 || (request.as_bands() && picture.channels() >= 2) ? 3 : 1),
        read_(color_space_ == ColorSpace::kCmyk ? 4 : channels_) {
    const std::array<uint32_t, 3> bands = ChosenBands(request, picture.channels());
    for (uint32_t i = 0; i < 3; ++i) sources_[i] = selection.PlaceOf(bands[i]);
  }

  int32_t Write() {
    int32_t status = CheckComponents();
    if (status != SUCCESS) return status;
    const uint32_t width = picture_.width;
    const std::unique_ptr<int32_t[]> buffer(new (std::nothrow) int32_t[uint64_t{width} * read_]);
    if (buffer == nullptr) return ERR_NO_MEMORY;
    PixelView view;
    status = MakePicture(request_, {width, picture_.height, channels_, precision_}, &view);
    if (status != SUCCESS) return status;
    if (IsPlain()) {
      for (uint32_t y = 0; y < view.height; ++y) WritePlainRow(y, view);
      return SUCCESS;
    }
    int32_t* rows[4] = {};
    for (uint32_t i = 0; i < read_; ++i) rows[i] = buffer.get() + uint64_t{i} * width;
    for (uint32_t y = 0; y < view.height; ++y) WriteRow(y, rows, view);
    return SUCCESS;
  }

 private:
  ColorSpace FindColorSpace() const {
    if (request_.as_bands() || image_.numcomps < 3) return ColorSpace::kAsIs;
    if (image_.color_space == OPJ_CLRSPC_SYCC) return ColorSpace::kYcc;
    if (image_.color_space == OPJ_CLRSPC_EYCC) return ColorSpace::kExtendedYcc;
    if (image_.color_space == OPJ_CLRSPC_CMYK && image_.numcomps >= 4) return ColorSpace::kCmyk;
    // A bare codestream names no colour space; smaller second and third components are colour differences.
    const bool smaller = image_.comps[1].dx > image_.comps[0].dx && image_.comps[2].dx > image_.comps[0].dx;
    const bool guesses = !picture_.is_jp2 && !request_.as_rgb() && image_.numcomps == 3 && smaller;
    return guesses ? ColorSpace::kYcc : ColorSpace::kAsIs;
  }

  int32_t CheckComponents() {
    for (uint32_t i = 0; i < read_; ++i) {
      const uint32_t source = i < 3 ? sources_[i] : i;
      if (source >= image_.numcomps) return ERR_FILE_FORMAT;
      const opj_image_comp_t& component = image_.comps[source];
      if (component.data == nullptr || component.w == 0 || component.h == 0 || component.prec == 0) {
        return ERR_FILE_FORMAT;
      }
      if (component.prec > 16) return ERR_NOT_SUPPORTED;
      precision_ = std::max(precision_, component.prec);
    }
    return SUCCESS;
  }

  // Whether all samples go to the bitmap as they are; the decoder has limited them to their depth.
  bool IsPlain() const {
    const uint32_t bits = channels_ == 3 ? std::max(precision_, 8u) : precision_;
    bool plain = color_space_ == ColorSpace::kAsIs;
    for (uint32_t i = 0; i < read_; ++i) {
      const opj_image_comp_t& component = image_.comps[sources_[i]];
      plain = plain && component.prec == bits && component.sgnd == 0 && component.w == picture_.width &&
              component.h == picture_.height;
    }
    return plain;
  }

  void WritePlainRow(uint32_t y, const PixelView& view) const {
    const std::array<uint32_t, 3> places = ChannelPlaces(request_);
    const OPJ_INT32* rows[3] = {};
    for (uint32_t i = 0; i < channels_; ++i) {
      rows[channels_ == 3 ? places[i] : 0] = image_.comps[sources_[i]].data + uint64_t{y} * view.width;
    }
    uint8_t* const out = view.ReplaceRow(y);
    if (channels_ == 1 && precision_ <= 8) {
      StorePlain<uint8_t>(rows[0], view.width, out);
    } else if (channels_ == 1) {
      StorePlain<uint16_t>(rows[0], view.width, out);
    } else if (precision_ <= 8) {
      StorePlain<uint8_t>(rows[0], rows[1], rows[2], view.width, out);
    } else {
      StorePlain<uint16_t>(rows[0], rows[1], rows[2], view.width, out);
    }
  }

  void WriteRow(uint32_t y, int32_t* const* rows, const PixelView& view) const {
    // Grey keeps its values; colours of fewer than 8 bits have no palette to stretch them.
    const uint32_t bits = channels_ == 3 ? std::max(precision_, 8u) : precision_;
    for (uint32_t i = 0; i < read_; ++i) {
      ComponentReader(picture_, image_.comps[i < 3 ? sources_[i] : i], bits).Read(y, rows[i]);
    }
    if (color_space_ == ColorSpace::kYcc) ConvertYcc(kYcc, bits, view.width, rows);
    if (color_space_ == ColorSpace::kExtendedYcc) ConvertYcc(kExtendedYcc, bits, view.width, rows);
    if (color_space_ == ColorSpace::kCmyk) ConvertCmyk(bits, view.width, rows);
    uint8_t* const out = view.ReplaceRow(y);
    const std::array<uint32_t, 3> places = ChannelPlaces(request_);
    for (uint32_t i = 0; i < channels_; ++i) {
      const uint32_t place = channels_ == 3 ? places[i] : 0;
      if (precision_ <= 8) {
        StoreChannel<uint8_t>(rows[i], view.width, channels_, out + place);
      } else {
        StoreChannel<uint16_t>(rows[i], view.width, channels_, out + uint64_t{2} * place);
      }
    }
  }

  const Jpeg2000Stream& picture_;
  const DecodeRequest& request_;
  const opj_image_t& image_;
  ColorSpace color_space_;
  uint32_t channels_;
  uint32_t read_;  // components that are read for them
  std::array<uint32_t, 3> sources_{};
  uint32_t precision_ = 0;
};

int32_t Decode(Bytes stream, const DecodeRequest& request) noexcept {
  Jpeg2000Stream picture;
  int32_t status = ReadJpeg2000Header(stream, &picture);
  if (status != SUCCESS) return status;
  const Selection selection = SelectComponents(picture, request);
  status = CheckJpeg2000Claim(picture, HeldSamples(picture, selection));
  if (status != SUCCESS) return status;
  ImageOwner image;
  status = DecodeImage(picture, stream, selection, &image);
  if (status != SUCCESS) return status;
  // The decoder reads the header anew; both must have found the same picture.
  const Jpeg2000Grid& grid = picture.grid;
  if (image->x0 != grid.left || image->y0 != grid.top || image->x1 != grid.right ||
      image->y1 != grid.bottom) {
    return ERR_FILE_FORMAT;
  }
  return ImageWriter(picture, request, selection, *image).Write();
}

int32_t IdentifyStream(Bytes stream, StreamInfo* info) noexcept {
  Jpeg2000Stream picture;
  const int32_t status = ReadJpeg2000Header(stream, &picture);
  if (status != SUCCESS) return status;
  *info = {kFormatJpeg2000, picture.width, picture.height, PixelBits(picture.channels(), picture.precision)};
  return SUCCESS;
}

const char* Version() noexcept {
  static char text[32];
  static const bool written = [] {
    std::strcpy(text, "OpenJPEG ");
    std::strncat(text, opj_version(), sizeof text - sizeof "OpenJPEG ");
    return true;
  }();
  return written ? text : nullptr;
}

}  // namespace

const Codec kJpeg2000Codec{Version, IdentifyStream, Decode};

}  // namespace tavi::host
