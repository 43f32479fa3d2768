// pnm_decoder.cpp - the Netpbm formats: PBM, PGM and PPM, plain and raw, and PAM.
#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "formats/decoder.h"
#include "formats/samples.h"

namespace pictures {
namespace {

bool IsSpace(uint8_t byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

// Takes words from the front of the file: what stands between blanks, comments left out.
class Words {
 public:
  explicit Words(Bytes file) : rest_(file) {}

  Bytes Rest() const { return rest_; }
  uint8_t Take() {
    if (rest_.empty()) throw CutOff();
    const uint8_t byte = rest_.front();
    rest_ = rest_.subspan(1);
    return byte;
  }
  void SkipSpace() {
    while (!rest_.empty() && (IsSpace(rest_.front()) || rest_.front() == '#')) {
      if (Take() == '#') TakeLine();
    }
  }
  std::string_view TakeLine() {
    const auto end = std::find(rest_.begin(), rest_.end(), '\n');
    const auto size = static_cast<size_t>(end - rest_.begin());
    const std::string_view line(reinterpret_cast<const char*>(rest_.data()), size);
    rest_ = rest_.subspan(std::min(size + 1, rest_.size()));
    return line;
  }
  std::string_view TakeWord() {
    SkipSpace();
    const auto end = std::find_if(rest_.begin(), rest_.end(), IsSpace);
    const auto size = static_cast<size_t>(end - rest_.begin());
    const std::string_view word(reinterpret_cast<const char*>(rest_.data()), size);
    rest_ = rest_.subspan(size);
    return word;
  }
  uint32_t TakeNumber(uint32_t most) {
    const std::string_view word = TakeWord();
    if (word.empty()) throw CutOff();
    uint64_t number = 0;
    for (const char c : word) {
      if (c < '0' || c > '9') throw Damaged("where a number should stand is none");
      number = number * 10 + static_cast<uint64_t>(c - '0');
      if (number > most) throw Damaged("a number is larger than it may be");
    }
    return static_cast<uint32_t>(number);
  }

 private:
  Bytes rest_;
};

constexpr uint32_t kMostSide = 0x7FFF'FFFF;

struct PnmFacts {
  char kind = 0;  // '1' to '7'
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t most = 1;  // the value of white
  int channels = 1;   // of a pixel, the alpha's among them
  bool alpha = false;
  Colour colour = Colour::kGrey;
  Bytes samples;

  bool IsPlain() const { return kind <= '3'; }
  size_t SampleSize() const { return most > 255 ? 2 : 1; }
  // Of rows of raw samples.
  uint64_t Stride() const {
    if (kind == '4') return (uint64_t{width} + 7) / 8;
    return uint64_t{width} * static_cast<unsigned>(channels) * SampleSize();
  }
};

void ReadPamHeader(Words* words, PnmFacts* facts) {
  uint32_t depth = 0;
  std::string type;
  for (;;) {
    const std::string_view word = words->TakeWord();
    if (word == "ENDHDR") break;
    if (word == "WIDTH") {
      facts->width = words->TakeNumber(kMostSide);
    } else if (word == "HEIGHT") {
      facts->height = words->TakeNumber(kMostSide);
    } else if (word == "DEPTH") {
      depth = words->TakeNumber(65535);
    } else if (word == "MAXVAL") {
      facts->most = words->TakeNumber(65535);
    } else if (word == "TUPLTYPE") {
      type = words->TakeWord();
    } else {
      if (word.empty()) throw CutOff();
      throw Damaged("its header has an entry that PAM does not know");
    }
  }
  words->TakeLine();
  if (depth < 1 || depth > 4) {
    throw ImageError("has " + std::to_string(depth) +
                     " samples for each pixel; save it as grey or RGB, with alpha or without");
  }
  facts->channels = static_cast<int>(depth);
  facts->alpha = depth == 2 || (depth == 4 && type != "CMYK");
  facts->colour = depth <= 2                   ? Colour::kGrey
                  : facts->alpha || depth == 3 ? Colour::kRgb
                                               : Colour::kCmyk;
}

PnmFacts ReadPnmHeader(Bytes file) {
  PnmFacts facts;
  Words words(file.subspan(2));
  facts.kind = static_cast<char>(file[1]);
  if (facts.kind == '7') {
    ReadPamHeader(&words, &facts);
  } else {
    facts.width = words.TakeNumber(kMostSide);
    facts.height = words.TakeNumber(kMostSide);
    if (facts.kind != '1' && facts.kind != '4') facts.most = words.TakeNumber(65535);
    if (facts.kind == '3' || facts.kind == '6') {
      facts.channels = 3;
      facts.colour = Colour::kRgb;
    }
    if (!facts.IsPlain() && !IsSpace(words.Take())) throw Damaged("no blank ends its header");
  }
  if (facts.most == 0) throw Damaged("its samples have no range");
  facts.samples = words.Rest();
  return facts;
}

int BitsOf(const PnmFacts& facts) {
  return facts.most > 255 ? 16 : facts.most == 1 ? 1 : 8;
}

std::vector<ImagePlan> PlanPnm(Bytes file, const ReadLimits& limits) {
  const PnmFacts facts = ReadPnmHeader(file);
  ImagePlan plan;
  plan.format = Format::kPnm;
  plan.width = facts.width;
  plan.height = facts.height;
  CheckSize(plan.width, plan.height, limits);
  plan.depth = BitsOf(facts);
  plan.colour = facts.colour;
  plan.alpha = facts.alpha;
  plan.decodeReason = "PNM, which PDF does not know";
  SetMemory(static_cast<double>(plan.width) * plan.height * facts.channels * plan.depth / 8, limits,
            &plan);
  if (!facts.IsPlain()) {
    const uint64_t size = facts.Stride() * facts.height;
    if (size > facts.samples.size()) throw CutOff();
    if (size < facts.samples.size()) {
      plan.notes.push_back({true, "only its first picture was used; " +
                                      std::to_string(facts.samples.size() - size) +
                                      " bytes behind it were left out"});
    }
  }
  return OnlyPage(std::move(plan));
}

// Gives the samples of a file, one after the other.
class SampleSource {
 public:
  explicit SampleSource(const PnmFacts& facts) : facts_(facts), plain_(facts.samples) {}

  unsigned At(uint32_t y, size_t i) {
    const unsigned sample = facts_.IsPlain() ? TakePlain() : Raw(y, i);
    if (sample > facts_.most) throw Damaged("a sample is larger than its header allows");
    // White is 0 in PBM.
    return facts_.kind == '1' || facts_.kind == '4' ? 1 - sample : sample;
  }

 private:
  unsigned TakePlain() {
    if (facts_.kind != '1') return plain_.TakeNumber(65535);
    plain_.SkipSpace();  // digits of PBM need none between them
    return static_cast<unsigned>(plain_.Take() - '0');
  }
  unsigned Raw(uint32_t y, size_t i) const {
    const uint8_t* row = facts_.samples.data() + facts_.Stride() * y;
    return SampleAt(row, i, facts_.kind == '4' ? 1 : facts_.most > 255 ? 16 : 8);
  }

  const PnmFacts& facts_;
  Words plain_;
};

// Whether the samples are those of the picture, byte for byte.
bool IsVerbatim(const PnmFacts& facts) {
  return !facts.IsPlain() && (facts.most == 255 || facts.most == 65535) && !facts.alpha &&
         facts.colour != Colour::kCmyk;
}

DecodedImage DecodePnm(const ImagePlan& plan, Bytes file, std::vector<Note>*) {
  const PnmFacts facts = ReadPnmHeader(file);
  const int bits = BitsOf(facts);
  // Each sample of a plain file has a digit of its own: no memory for more than there are.
  const uint64_t samples =
      uint64_t{facts.width} * facts.height * static_cast<unsigned>(facts.channels);
  if (facts.IsPlain() && samples > facts.samples.size()) throw CutOff();
  DecodedImage image;
  image.pixels = Raster(facts.width, facts.height, bits, Channels(plan.colour));
  if (facts.alpha) image.alpha.emplace(facts.width, facts.height, bits, 1);
  const int colours = image.pixels.channels;
  const auto scale = [&](unsigned sample) {
    return static_cast<unsigned>((uint64_t{sample} * MaxSample(bits) + facts.most / 2) /
                                 facts.most);
  };
  if (IsVerbatim(facts)) {
    std::memcpy(image.pixels.bytes.Data(), facts.samples.data(), image.pixels.bytes.Size());
    return image;
  }
  SampleSource source(facts);
  for (uint32_t y = 0; y < facts.height; ++y) {
    SampleWriter pixels(image.pixels.Row(y), bits);
    SampleWriter alpha(image.alpha ? image.alpha->Row(y) : nullptr, bits);
    size_t i = 0;
    for (uint32_t x = 0; x < facts.width; ++x) {
      for (int c = 0; c < colours; ++c) {
        const unsigned value = scale(source.At(y, i++));
        // Decoded inks are inverted.
        pixels.Put(plan.colour == Colour::kCmyk ? MaxSample(bits) - value : value);
      }
      if (facts.alpha) alpha.Put(scale(source.At(y, i++)));
    }
    pixels.Finish();
    alpha.Finish();
  }
  return image;
}

bool IsPnm(Bytes head) {
  return head.size() > 2 && head[0] == 'P' && head[1] >= '1' && head[1] <= '7' &&
         (IsSpace(head[2]) || head[2] == '#');
}

}  // namespace

const Decoder kPnmDecoder{Format::kPnm, "PNM", IsPnm, PlanPnm, DecodePnm, nullptr, nullptr};

}  // namespace pictures
