// jpeg2000_reader.cpp - JPEG 2000: opaque grey and RGB JP2 files pass through, the rest is decoded.
//
// Readers differ over alpha, palettes, CMYK and bare codestreams in JPEG 2000, so these are decoded
// by OpenJPEG. The boxes are read by a walk of our own, which decodes nothing.
#include <openjpeg.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "readers/reader.h"
#include "readers/samples.h"

namespace tool {
namespace {

using namespace std::string_view_literals;

constexpr auto kFileMagic = "\0\0\0\x0CjP  \r\n\x87\n"sv;
constexpr auto kStreamMagic = "\xFF\x4F\xFF\x51"sv;  // SOC and SIZ
constexpr auto kCutOff =
    "ends before its picture does; the file was cut off, copy it again from its source";

// The boxes in a run of them, one after the other.
class BoxWalk {
 public:
  explicit BoxWalk(Bytes bytes) : bytes_(bytes) {}

  bool Next() {
    const Bytes head = Slice(bytes_, at_, 8);
    if (head.empty()) return false;
    uint64_t size = Be32(head.data()), headSize = 8;
    type = {reinterpret_cast<const char*>(head.data() + 4), 4};
    if (size == 1) {  // the size proper follows, in 64 bits
      const Bytes large = Slice(bytes_, at_ + 8, 8);
      if (large.empty()) throw ImageError(kCutOff);
      size = uint64_t{Be32(large.data())} << 32 | Be32(large.data() + 4);
      headSize = 16;
    } else if (size == 0) {  // up to the end
      size = bytes_.size() - at_;
    }
    if (size < headSize) throw ImageError("is damaged: a JP2 box without its size; save it again");
    data = Slice(bytes_, at_ + headSize, size - headSize);
    if (data.size() != size - headSize) throw ImageError(kCutOff);
    at_ += size;
    return true;
  }

  std::string_view type;
  Bytes data;

 private:
  Bytes bytes_;
  uint64_t at_ = 0;
};

enum class Model { kUnknown, kGrey, kRgb, kYcc, kCmyk };

struct Jpeg2000Facts {
  bool bare = false;  // a codestream without a JP2 file around it
  uint32_t width = 0;
  uint32_t height = 0;
  int components = 0;
  int depth = 0;        // of the deepest component
  bool uniform = true;  // one depth, unsigned, no subsampling
  Model model = Model::kUnknown;
  bool palette = false;
  bool alpha = false;
  bool reordered = false;  // channels are not in their usual order
  Bytes profile;
  Resolution resolution;
};

void ReadCodestream(Bytes stream, Jpeg2000Facts* facts) {
  constexpr size_t kComponents = 42;  // where their list begins, with SOC and the SIZ marker
  if (!StartsWith(stream, kStreamMagic) || stream.size() < kComponents) throw ImageError(kCutOff);
  const uint32_t right = Be32(&stream[8]), bottom = Be32(&stream[12]);
  const uint32_t left = Be32(&stream[16]), top = Be32(&stream[20]);
  facts->components = static_cast<int>(Be16(&stream[40]));
  if (left >= right || top >= bottom || facts->components == 0) {
    throw ImageError("is damaged: a picture without pixels; save it again");
  }
  facts->width = right - left;
  facts->height = bottom - top;
  const Bytes list = Slice(stream, kComponents, 3 * static_cast<size_t>(facts->components));
  if (list.empty()) throw ImageError(kCutOff);
  for (size_t i = 0; i < list.size(); i += 3) {
    const int depth = (list[i] & 0x7F) + 1;
    facts->uniform = facts->uniform && list[i] == list[0] && list[i] < 0x80 && list[i + 1] == 1 &&
                     list[i + 2] == 1;
    facts->depth = std::max(facts->depth, depth);
  }
  const size_t size = stream.size();
  // The end-of-codestream marker; padding may follow it in the file.
  size_t end = size;
  while (end > 2 && stream[end - 1] == 0) --end;
  if (stream[end - 2] != 0xFF || stream[end - 1] != 0xD9) throw ImageError(kCutOff);
}

Resolution ReadResolution(Bytes box) {
  Resolution found;
  BoxWalk walk(box);
  while (walk.Next()) {
    const bool display = walk.type == "resd", capture = walk.type == "resc";
    if ((!display && !capture) || walk.data.size() < 10 || (capture && found.Known())) continue;
    const uint8_t* d = walk.data.data();  // vertical first, as fractions and exponents, per metre
    const auto perInch = [](uint32_t above, uint32_t below, uint8_t exponent) {
      if (below == 0) return 0.0;
      return 0.0254 * above / below * std::pow(10.0, static_cast<int8_t>(exponent));
    };
    found = {perInch(Be16(d + 4), Be16(d + 6), d[9]), perInch(Be16(d), Be16(d + 2), d[8])};
  }
  return found;
}

void ReadColour(Bytes box, Jpeg2000Facts* facts) {
  if (facts->model != Model::kUnknown || box.size() < 4) return;  // the first that is known counts
  if (box[0] == 1 && box.size() >= 7) {
    switch (Be32(&box[3])) {
      case 12:
        facts->model = Model::kCmyk;
        break;
      case 16:
        facts->model = Model::kRgb;
        break;
      case 17:
        facts->model = Model::kGrey;
        break;
      case 18:
        facts->model = Model::kYcc;
        break;
      default:
        break;
    }
  } else if (box[0] == 2 && box.size() > 3 + 20) {
    facts->profile = box.subspan(3);
    const std::string_view space(reinterpret_cast<const char*>(&box[3 + 16]), 4);
    if (space == "GRAY") facts->model = Model::kGrey;
    if (space == "RGB ") facts->model = Model::kRgb;
    if (space == "CMYK") facts->model = Model::kCmyk;
  }
}

void ReadChannels(Bytes box, Jpeg2000Facts* facts) {
  for (size_t at = 2; at + 6 <= box.size(); at += 6) {
    const uint32_t channel = Be16(&box[at]), kind = Be16(&box[at + 2]), use = Be16(&box[at + 4]);
    if (kind == 1 || kind == 2) facts->alpha = true;
    if (kind == 0 && use != channel + 1) facts->reordered = true;
  }
}

Jpeg2000Facts ReadFacts(Bytes file) {
  Jpeg2000Facts facts;
  if (StartsWith(file, kStreamMagic)) {
    facts.bare = true;
    ReadCodestream(file, &facts);
    return facts;
  }
  bool stream = false;
  BoxWalk walk(file);
  while (walk.Next()) {
    if (walk.type == "jp2h") {
      BoxWalk header(walk.data);
      while (header.Next()) {
        if (header.type == "colr") ReadColour(header.data, &facts);
        if (header.type == "cdef") ReadChannels(header.data, &facts);
        if (header.type == "pclr") facts.palette = true;
        if (header.type == "res ") facts.resolution = ReadResolution(header.data);
      }
    } else if (walk.type == "jp2c" && !stream) {
      ReadCodestream(walk.data, &facts);
      stream = true;
    }
  }
  if (!stream) throw ImageError(kCutOff);
  return facts;
}

// The second of two components and the fourth of four that are not CMYK are alpha by custom, where
// the file does not say what they are.
bool AlphaByCustom(const Jpeg2000Facts& facts) {
  return !facts.alpha && !facts.palette &&
         (facts.components == 2 || (facts.components == 4 && facts.model != Model::kCmyk));
}

// Why the file must be decoded; empty where it passes through.
std::string DecodeReason(const Jpeg2000Facts& facts) {
  if (facts.bare) return "a JPEG 2000 codestream without a JP2 file";
  if (facts.alpha || AlphaByCustom(facts)) return "JPEG 2000 with alpha";
  if (facts.palette) return "JPEG 2000 with a palette";
  const bool grey = facts.model == Model::kGrey && facts.components == 1;
  const bool rgb = facts.model == Model::kRgb && facts.components == 3;
  if (!grey && !rgb) return "JPEG 2000 that is neither plain grey nor plain RGB";
  if (!facts.uniform || facts.reordered) return "JPEG 2000 with uneven components";
  if (facts.depth != 8) return "JPEG 2000 of other than 8 bits, which readers show differently";
  return {};
}

std::vector<ImagePlan> PlanJpeg2000(Bytes file, const ReadLimits& limits) {
  const Jpeg2000Facts facts = ReadFacts(file);
  CheckSize(facts.width, facts.height, limits);
  ImagePlan plan;
  plan.format = Format::kJpeg2000;
  plan.width = facts.width;
  plan.height = facts.height;
  plan.depth = facts.depth;
  plan.alpha = facts.alpha || AlphaByCustom(facts);
  plan.palette = facts.palette;
  if (facts.components > 5 || facts.depth > 16) {
    throw ImageError("has " + std::to_string(facts.components) + " components of up to " +
                     std::to_string(facts.depth) +
                     " bits; save it as grey, RGB or CMYK with at most 16 bits");
  }
  const int colours = facts.components - (plan.alpha ? 1 : 0);
  plan.colour = facts.model == Model::kCmyk                  ? Colour::kCmyk
                : facts.model == Model::kGrey || colours < 3 ? Colour::kGrey
                                                             : Colour::kRgb;
  if (facts.palette) plan.colour = Colour::kRgb;
  plan.resolution = facts.resolution;
  plan.decodeReason = DecodeReason(facts);
  plan.size = file.size();
  if (plan.PassesThrough()) {
    CheckStored(plan);
  } else {  // OpenJPEG has 32 bits for each sample
    const double pixels = static_cast<double>(plan.width) * plan.height;
    const int results = Channels(plan.colour) + (plan.alpha ? 1 : 0);
    SetMemory(pixels * (4 * facts.components + results * (plan.depth > 8 ? 2 : 1)), limits, &plan);
  }
  JudgeProfile(&plan, facts.profile);
  std::vector<ImagePlan> plans;
  plans.push_back(std::move(plan));
  return plans;
}

Buffer Jpeg2000Profile(const ImagePlan&, Bytes file) {
  return Buffer::CopyOf(ReadFacts(file).profile);
}

// OpenJPEG's view of a file in memory.
struct Memory {
  Bytes bytes;
  size_t at = 0;
};

OPJ_SIZE_T Read(void* to, OPJ_SIZE_T size, void* data) {
  auto* memory = static_cast<Memory*>(data);
  const size_t count = std::min<size_t>(size, memory->bytes.size() - memory->at);
  if (count == 0) return static_cast<OPJ_SIZE_T>(-1);
  std::memcpy(to, memory->bytes.data() + memory->at, count);
  memory->at += count;
  return count;
}

OPJ_OFF_T Skip(OPJ_OFF_T count, void* data) {
  auto* memory = static_cast<Memory*>(data);
  const auto left = static_cast<OPJ_OFF_T>(memory->bytes.size() - memory->at);
  if (count < 0) return -1;
  const OPJ_OFF_T skipped = std::min(count, left);
  memory->at += static_cast<size_t>(skipped);
  return skipped;
}

OPJ_BOOL Seek(OPJ_OFF_T to, void* data) {
  auto* memory = static_cast<Memory*>(data);
  if (to < 0 || static_cast<size_t>(to) > memory->bytes.size()) return OPJ_FALSE;
  memory->at = static_cast<size_t>(to);
  return OPJ_TRUE;
}

void KeepText(const char* text, void* to) {
  auto* kept = static_cast<std::string*>(to);
  if (!kept->empty()) return;
  *kept = text;
  while (!kept->empty() && (kept->back() == '\n' || kept->back() == '.')) kept->pop_back();
}

void Ignore(const char*, void*) {}

struct FreeImage {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using Image = std::unique_ptr<opj_image_t, FreeImage>;
// OpenJPEG's handles are all of one type, so each names its function.
using Stream = std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)>;
using Codec = std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)>;

Image Decode(Bytes file, bool bare) {
  std::string error;
  Memory memory{file};
  const Stream stream(opj_stream_create(size_t{64} << 10, OPJ_TRUE), opj_stream_destroy);
  const Codec codec(opj_create_decompress(bare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2), opj_destroy_codec);
  if (!stream || !codec) throw std::bad_alloc();
  opj_stream_set_user_data(stream.get(), &memory, nullptr);
  opj_stream_set_user_data_length(stream.get(), file.size());
  opj_stream_set_read_function(stream.get(), Read);
  opj_stream_set_skip_function(stream.get(), Skip);
  opj_stream_set_seek_function(stream.get(), Seek);
  opj_set_error_handler(codec.get(), KeepText, &error);
  opj_set_warning_handler(codec.get(), Ignore, nullptr);
  opj_set_info_handler(codec.get(), Ignore, nullptr);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  opj_image_t* image = nullptr;
  const bool begun = opj_setup_decoder(codec.get(), &parameters) == OPJ_TRUE &&
                     opj_read_header(stream.get(), codec.get(), &image) == OPJ_TRUE;
  Image decoded(image);
  if (!begun || opj_decode(codec.get(), stream.get(), image) != OPJ_TRUE ||
      opj_end_decompress(codec.get(), stream.get()) != OPJ_TRUE) {
    throw ImageError("cannot be decoded (OpenJPEG: " + (error.empty() ? "damaged" : error) +
                     "); the file is damaged, save the picture again");
  }
  return decoded;
}

// A component's samples from 0 up, whatever its sign and its subsampling.
class Component {
 public:
  Component(const opj_image_comp_t& component, const opj_image_t& image)
      : component_(component),
        bits_(static_cast<int>(component.prec)),
        offset_(component.sgnd != 0 ? 1 << (bits_ - 1) : 0),
        left_(image.x0),
        top_(image.y0) {
    if (component.data == nullptr || component.w == 0 || component.h == 0 || bits_ < 1 ||
        bits_ > 16) {
      throw ImageError("cannot be decoded: a component without samples; save the picture again");
    }
  }
  int Bits() const { return bits_; }
  unsigned At(uint32_t x, uint32_t y) const {
    const uint32_t cx = std::min((x + left_) / component_.dx - component_.x0, component_.w - 1);
    const uint32_t cy = std::min((y + top_) / component_.dy - component_.y0, component_.h - 1);
    const int32_t sample = component_.data[size_t{cy} * component_.w + cx] + offset_;
    return static_cast<unsigned>(
        std::clamp<int32_t>(sample, 0, static_cast<int32_t>(MaxSample(bits_))));
  }

 private:
  const opj_image_comp_t& component_;
  int bits_;
  int32_t offset_;
  uint32_t left_, top_;
};

struct YccToRgb {
  int bits;
  std::array<unsigned, 3> operator()(unsigned luma, unsigned blue, unsigned red) const {
    const double most = MaxSample(bits), middle = 1 << (bits - 1);
    const double y = luma, cb = blue - middle, cr = red - middle;
    const auto rounded = [&](double v) {
      return static_cast<unsigned>(std::clamp(v + 0.5, 0.0, most));
    };
    return {rounded(y + 1.402 * cr), rounded(y - 0.344136 * cb - 0.714136 * cr),
            rounded(y + 1.772 * cb)};
  }
};

DecodedImage DecodeJpeg2000(const ImagePlan& plan, Bytes file, std::vector<Note>*) {
  const Jpeg2000Facts facts = ReadFacts(file);
  const Image decoded = Decode(file, facts.bare);
  const opj_image_t& image = *decoded;
  if (image.x1 - image.x0 != plan.width || image.y1 - image.y0 != plan.height) {
    throw ImageError("is damaged: it has two sizes; save the picture again");
  }
  std::vector<Component> colours;
  std::optional<Component> alpha;
  bool premultiplied = false;
  for (uint32_t i = 0; i < image.numcomps; ++i) {
    if (image.comps[i].alpha != 0 || (AlphaByCustom(facts) && i + 1 == image.numcomps)) {
      if (!alpha) alpha.emplace(image.comps[i], image);
      premultiplied = image.comps[i].alpha == 2;
    } else {
      colours.emplace_back(image.comps[i], image);
    }
  }
  const bool ycc =
      (facts.model == Model::kYcc || image.color_space == OPJ_CLRSPC_SYCC) && colours.size() >= 3;
  const bool cmyk = plan.colour == Colour::kCmyk && colours.size() >= 4;
  const size_t channels = cmyk ? 4 : colours.size() >= 3 && plan.colour != Colour::kGrey ? 3 : 1;
  if (colours.empty()) throw ImageError("holds alpha only, no picture; save it again");
  int depth = 1;
  for (size_t c = 0; c < channels; ++c) depth = std::max(depth, colours[c].Bits());
  const int bits = ycc ? (depth <= 8 ? 8 : 16) : PdfBits(depth);
  DecodedImage result;
  result.pixels = Raster(plan.width, plan.height, bits, static_cast<int>(channels));
  if (alpha) result.alpha.emplace(plan.width, plan.height, PdfBits(alpha->Bits()), 1);
  for (uint32_t y = 0; y < plan.height; ++y) {
    SampleWriter to(result.pixels.Row(y), bits);
    SampleWriter toAlpha(alpha ? result.alpha->Row(y) : nullptr, alpha ? result.alpha->bits : 8);
    for (uint32_t x = 0; x < plan.width; ++x) {
      std::array<unsigned, 4> sample{};
      for (size_t c = 0; c < channels; ++c) {
        sample[c] = Rescale(colours[c].At(x, y), colours[c].Bits(), bits);
      }
      if (ycc) {
        const auto rgb = YccToRgb{bits}(sample[0], sample[1], sample[2]);
        std::copy(rgb.begin(), rgb.end(), sample.begin());
      }
      const unsigned opacity = alpha ? alpha->At(x, y) : 0;
      if (alpha) toAlpha.Put(Rescale(opacity, alpha->Bits(), result.alpha->bits));
      for (size_t c = 0; c < channels; ++c) {
        unsigned value = sample[c];
        if (premultiplied && opacity != 0) {
          value = static_cast<unsigned>(std::min<uint64_t>(
              MaxSample(bits), uint64_t{value} * MaxSample(alpha->Bits()) / opacity));
        }
        // The PDF declares its CMYK with the inks inverted.
        to.Put(cmyk ? MaxSample(bits) - value : value);
      }
    }
    to.Finish();
    if (alpha) toAlpha.Finish();
  }
  return result;
}

bool IsJpeg2000(Bytes head) {
  return StartsWith(head, kFileMagic) || StartsWith(head, kStreamMagic);
}

}  // namespace

const Reader kJpeg2000Reader{Format::kJpeg2000, "JPEG 2000",    IsJpeg2000,
                             PlanJpeg2000,      DecodeJpeg2000, Jpeg2000Profile};

}  // namespace tool
