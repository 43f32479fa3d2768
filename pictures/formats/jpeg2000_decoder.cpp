// jpeg2000_decoder.cpp - JPEG 2000: opaque grey and RGB passes through, the rest is decoded.
//
// A codestream is put into JP2 boxes, which readers want. They differ over alpha, palettes and CMYK
// in JPEG 2000, so these are decoded by OpenJPEG. Planning reads the boxes and the codestream's
// headers by code of our own, which decodes nothing.
#include <openjpeg.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "formats/decoder.h"
#include "formats/exif.h"
#include "formats/jpeg2000_file.h"
#include "formats/samples.h"

namespace pictures {
namespace {

using namespace std::string_view_literals;

using Model = Jpeg2000File::Model;

// The second of two components and the fourth of four that are not CMYK are alpha by custom, where
// the file does not say what they are.
bool AlphaByCustom(const Jpeg2000File& file) {
  const int components = file.stream.components;
  return !file.alpha && !file.palette &&
         (components == 2 || (components == 4 && file.model != Model::kCmyk));
}

// Why the file must be decoded; empty where it passes through.
std::string DecodeReason(const Jpeg2000File& file) {
  if (!file.damage.empty()) return "damaged JPEG 2000";
  if (file.alpha || AlphaByCustom(file)) return "JPEG 2000 with alpha";
  if (file.palette) return "JPEG 2000 with a palette";
  // A codestream without boxes does not say what its colours are: what they are by custom.
  const bool grey = (file.bare || file.model == Model::kGrey) && file.stream.components == 1;
  const bool rgb = (file.bare || file.model == Model::kRgb) && file.stream.components == 3;
  if (!grey && !rgb) return "JPEG 2000 that is neither plain grey nor plain RGB";
  if (!file.stream.uniform || file.reordered) return "JPEG 2000 with uneven components";
  if (file.stream.extended) return "JPEG 2000 with extensions, which few readers know";
  if (file.stream.depth != 8) {
    return "JPEG 2000 of other than 8 bits, which readers show differently";
  }
  return {};
}

// OpenJPEG has 32 bits for each sample, and some kilobytes for each tile.
double DecodingMemory(const Jpeg2000File& file, const ImagePlan& plan) {
  const double pixels = static_cast<double>(plan.width) * plan.height;
  const int results = Channels(plan.colour) + (plan.alpha ? 1 : 0);
  return pixels * (4 * file.stream.components + results * (plan.depth > 8 ? 2 : 1)) +
         8192.0 * file.stream.tiles;
}

void AddNotes(const Jpeg2000File& file, ImagePlan* plan) {
  if (!file.damage.empty()) {
    plan->notes.push_back({true, "is damaged (" + file.damage + "), but could be decoded"});
  }
  if (file.streams > 1) {
    plan->notes.push_back(
        {true, "only the first of its " + std::to_string(file.streams) + " pictures was used"});
  }
}

std::vector<ImagePlan> PlanJpeg2000(Bytes bytes, const ReadLimits& limits) {
  const Jpeg2000File file = ReadJpeg2000File(bytes);
  const Jpeg2000Codestream& stream = file.stream;
  CheckSize(stream.width, stream.height, limits);
  ImagePlan plan;
  plan.format = Format::kJpeg2000;
  plan.width = stream.width;
  plan.height = stream.height;
  plan.depth = stream.depth;
  plan.alpha = file.alpha || AlphaByCustom(file);
  plan.palette = file.palette;
  if (stream.components > 5 || stream.depth > 16) {
    throw ImageError("has " + std::to_string(stream.components) + " components of up to " +
                     std::to_string(stream.depth) +
                     " bits; save it as grey, RGB or CMYK with at most 16 bits");
  }
  const int colours = stream.components - (plan.alpha ? 1 : 0);
  plan.colour = file.model == Model::kCmyk                  ? Colour::kCmyk
                : file.model == Model::kGrey || colours < 3 ? Colour::kGrey
                                                            : Colour::kRgb;
  if (file.palette) plan.colour = Colour::kRgb;
  plan.resolution = file.resolution;
  ApplyExif(file.exif, &plan);
  AddNotes(file, &plan);
  plan.decodeReason = DecodeReason(file);
  plan.size = bytes.size();
  if (plan.PassesThrough()) {
    CheckStored(plan);
  } else {
    SetMemory(DecodingMemory(file, plan), limits, &plan);
  }
  JudgeProfile(&plan, file.profile);
  return OnlyPage(std::move(plan));
}

Buffer Jpeg2000Profile(const ImagePlan&, Bytes bytes) {
  return Buffer::CopyOf(ReadJpeg2000File(bytes).profile);
}

// A file in memory as OpenJPEG reads it.
struct OpjInput {
  Bytes bytes;
  size_t at = 0;
};

OPJ_SIZE_T Read(void* to, OPJ_SIZE_T size, void* data) {
  auto* input = static_cast<OpjInput*>(data);
  const size_t count = std::min<size_t>(size, input->bytes.size() - input->at);
  if (count == 0) return static_cast<OPJ_SIZE_T>(-1);
  std::memcpy(to, input->bytes.data() + input->at, count);
  input->at += count;
  return count;
}

OPJ_OFF_T Skip(OPJ_OFF_T count, void* data) {
  auto* input = static_cast<OpjInput*>(data);
  const auto left = static_cast<OPJ_OFF_T>(input->bytes.size() - input->at);
  if (count < 0) return -1;
  const OPJ_OFF_T skipped = std::min(count, left);
  input->at += static_cast<size_t>(skipped);
  return skipped;
}

OPJ_BOOL Seek(OPJ_OFF_T to, void* data) {
  auto* input = static_cast<OpjInput*>(data);
  if (to < 0 || static_cast<size_t>(to) > input->bytes.size()) return OPJ_FALSE;
  input->at = static_cast<size_t>(to);
  return OPJ_TRUE;
}

void KeepText(const char* text, void* to) {
  auto* kept = static_cast<std::string*>(to);
  if (!kept->empty()) return;
  *kept = text;
  while (!kept->empty() && (kept->back() == '\n' || kept->back() == '.')) kept->pop_back();
}

void Ignore(const char*, void*) {}

struct FreeOpjImage {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using OpjImage = std::unique_ptr<opj_image_t, FreeOpjImage>;
// OpenJPEG's handles are all of one type, so each names its function.
using Stream = std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)>;
using Codec = std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)>;

OpjImage Decode(Bytes file, bool bare) {
  std::string error;
  OpjInput input{file};
  const Stream stream(opj_stream_create(size_t{64} << 10, OPJ_TRUE), opj_stream_destroy);
  const Codec codec(opj_create_decompress(bare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2), opj_destroy_codec);
  if (!stream || !codec) throw std::bad_alloc();
  opj_stream_set_user_data(stream.get(), &input, nullptr);
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
  OpjImage decoded(image);
  if (!begun || opj_decode(codec.get(), stream.get(), image) != OPJ_TRUE ||
      opj_end_decompress(codec.get(), stream.get()) != OPJ_TRUE) {
    throw Undecodable("OpenJPEG: " + (error.empty() ? "damaged" : error));
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
    const uint32_t cx = Place(x + left_, component_.dx, component_.x0, component_.w);
    const uint32_t cy = Place(y + top_, component_.dy, component_.y0, component_.h);
    const int32_t sample = component_.data[size_t{cy} * component_.w + cx] + offset_;
    return static_cast<unsigned>(
        std::clamp<int32_t>(sample, 0, static_cast<int32_t>(MaxSample(bits_))));
  }

 private:
  // A picture may begin between two samples: the first one then holds for what is before it.
  static uint32_t Place(uint32_t at, uint32_t step, uint32_t first, uint32_t count) {
    return std::clamp(at / step, first, first + count - 1) - first;
  }

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

// The bytes to decode with the end marker that OpenJPEG wants and the file lacks.
Buffer WithEnd(const Jpeg2000File& facts, Bytes file) {
  const auto before = static_cast<size_t>(facts.data.data() - file.data());
  const Bytes bytes = facts.bare ? facts.data : file.first(before + facts.data.size());
  Buffer mended(bytes.size() + 2);
  std::memcpy(mended.Data(), bytes.data(), bytes.size());
  mended.Data()[bytes.size()] = 0xFF;
  mended.Data()[bytes.size() + 1] = 0xD9;
  return mended;
}

// Turns decoded components into the pixels and the alpha of the PDF.
class ComponentConverter {
 public:
  ComponentConverter(const Jpeg2000File& facts, const ImagePlan& plan, const opj_image_t& image) {
    for (uint32_t i = 0; i < image.numcomps; ++i) {
      const uint16_t kind = image.comps[i].alpha;
      if (kind == 0 && !(AlphaByCustom(facts) && i + 1 == image.numcomps)) {
        colours_.emplace_back(image.comps[i], image);
      } else {
        if (!alpha_) alpha_.emplace(image.comps[i], image);
        premultiplied_ = kind == 2;
      }
    }
    if (colours_.empty()) throw ImageError("holds alpha only, no picture; save it again");
    const size_t found = colours_.size();
    ycc_ = (facts.model == Model::kYcc || image.color_space == OPJ_CLRSPC_SYCC) && found >= 3;
    cmyk_ = plan.colour == Colour::kCmyk && found >= 4;
    const size_t shown = cmyk_ ? 4 : found >= 3 && plan.colour != Colour::kGrey ? 3 : 1;
    while (colours_.size() > shown) colours_.pop_back();
    int depth = 1;
    for (const Component& colour : colours_) depth = std::max(depth, colour.Bits());
    bits_ = ycc_ ? (depth <= 8 ? 8 : 16) : PdfBits(depth);
  }

  DecodedImage Convert(uint32_t width, uint32_t height) const {
    DecodedImage image;
    image.pixels = Raster(width, height, bits_, static_cast<int>(colours_.size()));
    if (alpha_) image.alpha.emplace(width, height, PdfBits(alpha_->Bits()), 1);
    for (uint32_t y = 0; y < height; ++y) {
      ConvertRow(y, &image.pixels);
      if (image.alpha) ConvertAlpha(y, &*image.alpha);
    }
    return image;
  }

 private:
  void ConvertRow(uint32_t y, Raster* pixels) const {
    SampleWriter to(pixels->Row(y), bits_);
    for (uint32_t x = 0; x < pixels->width; ++x) {
      const std::array<unsigned, 4> samples = Samples(x, y);
      const unsigned opacity = premultiplied_ ? alpha_->At(x, y) : 0;
      for (size_t c = 0; c < colours_.size(); ++c) {
        unsigned sample = samples[c];
        if (premultiplied_) sample = Unpremultiply(sample, bits_, opacity, alpha_->Bits());
        // The PDF declares its CMYK with the inks inverted.
        to.Put(cmyk_ ? MaxSample(bits_) - sample : sample);
      }
    }
    to.Finish();
  }

  std::array<unsigned, 4> Samples(uint32_t x, uint32_t y) const {
    std::array<unsigned, 4> samples{};
    for (size_t c = 0; c < colours_.size(); ++c) {
      samples[c] = Rescale(colours_[c].At(x, y), colours_[c].Bits(), bits_);
    }
    if (ycc_) {
      const auto rgb = YccToRgb{bits_}(samples[0], samples[1], samples[2]);
      std::copy(rgb.begin(), rgb.end(), samples.begin());
    }
    return samples;
  }

  void ConvertAlpha(uint32_t y, Raster* alpha) const {
    SampleWriter to(alpha->Row(y), alpha->bits);
    for (uint32_t x = 0; x < alpha->width; ++x) {
      to.Put(Rescale(alpha_->At(x, y), alpha_->Bits(), alpha->bits));
    }
    to.Finish();
  }

  std::vector<Component> colours_;
  std::optional<Component> alpha_;
  bool premultiplied_ = false;
  bool ycc_ = false;
  bool cmyk_ = false;
  int bits_ = 8;
};

DecodedImage DecodeJpeg2000(const ImagePlan& plan, Bytes file, std::vector<Note>*) {
  const Jpeg2000File facts = ReadJpeg2000File(file);
  const Buffer mended = facts.stream.ended ? Buffer() : WithEnd(facts, file);
  const Bytes whole = facts.bare ? facts.data : file;
  const OpjImage image = Decode(mended.Empty() ? whole : mended.View(), facts.bare);
  if (image->x1 - image->x0 != plan.width || image->y1 - image->y0 != plan.height) {
    throw Damaged("it has two sizes");
  }
  return ComponentConverter(facts, plan, *image).Convert(plan.width, plan.height);
}

// The boxes in front of a codestream, that of the codestream begun: readers want a file in a PDF.
Buffer MakeBoxes(const Jpeg2000Codestream& stream) {
  constexpr size_t kImageHeader = 8 + 14, kColour = 8 + 7, kType = 8 + 12;
  Buffer boxes(kJp2Magic.size() + kType + 8 + kImageHeader + kColour + 8);
  uint8_t* to = std::copy(kJp2Magic.begin(), kJp2Magic.end(), boxes.Data());
  const auto begin = [&](uint64_t size, std::string_view name) {
    PutBe32(size > UINT32_MAX ? 0 : static_cast<uint32_t>(size), &to);  // 0: up to the end
    to = std::copy(name.begin(), name.end(), to);
  };
  constexpr std::string_view kBrandAndNoVersion("jp2 \0\0\0\0jp2 ", 12);
  begin(kType, "ftyp");
  to = std::copy(kBrandAndNoVersion.begin(), kBrandAndNoVersion.end(), to);
  begin(8 + kImageHeader + kColour, "jp2h");
  begin(kImageHeader, "ihdr");
  PutBe32(stream.height, &to);
  PutBe32(stream.width, &to);
  PutBe32(static_cast<uint32_t>(stream.components) << 16 | uint32_t{stream.precision} << 8 | 7,
          &to);
  *to++ = 0;  // the colours are known
  *to++ = 0;  // no rights
  begin(kColour, "colr");
  *to++ = 1;  // by number
  *to++ = 0;
  *to++ = 0;
  PutBe32(stream.components == 1 ? 17 : 16, &to);
  begin(8 + stream.size, "jp2c");
  return boxes;
}

std::optional<EncodedImage> PassJpeg2000Through(const ImagePlan& plan, Bytes bytes, int) {
  EncodedImage image = PassThrough(plan, bytes, Filter::kJpx);
  const Jpeg2000File file = ReadJpeg2000File(bytes);
  if (file.bare) {
    image.pixels.owned = MakeBoxes(file.stream);
    image.pixels.pieces = {image.pixels.owned.View(), file.data};
  }
  return image;
}

bool IsJpeg2000(Bytes head) {
  return StartsWith(head, kJp2Magic) || StartsWith(head, kCodestreamMagic);
}

}  // namespace

const Decoder kJpeg2000Decoder{Format::kJpeg2000, "JPEG 2000",     IsJpeg2000,         PlanJpeg2000,
                               DecodeJpeg2000,    Jpeg2000Profile, PassJpeg2000Through};

}  // namespace pictures
