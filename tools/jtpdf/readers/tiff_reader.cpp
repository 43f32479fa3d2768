// tiff_reader.cpp - TIFF: every page, strips or tiles, decoded by libtiff.
//
// Pixels are taken as the file stores them, at their own depth. The colour models that need
// arithmetic (YCbCr that is not JPEG, CIELAB, LogLuv) come through libtiff's own conversion to
// 8-bit RGB.
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "exif.h"
#include "readers/reader.h"
#include "readers/samples.h"

namespace tool {
namespace {

using namespace std::string_view_literals;

// libtiff's view of a file in memory, and what it last said.
struct Memory {
  Bytes bytes;
  uint64_t at = 0;
  std::string error;
  std::string warning;
};

tmsize_t Read(thandle_t handle, void* to, tmsize_t size) {
  auto* memory = static_cast<Memory*>(handle);
  const uint64_t left = memory->at < memory->bytes.size() ? memory->bytes.size() - memory->at : 0;
  const size_t count = static_cast<size_t>(std::min<uint64_t>(left, static_cast<uint64_t>(size)));
  if (count > 0) std::memcpy(to, memory->bytes.data() + memory->at, count);
  memory->at += count;
  return static_cast<tmsize_t>(count);
}

tmsize_t RefuseWrite(thandle_t, void*, tmsize_t) {
  return 0;
}

toff_t Seek(thandle_t handle, toff_t offset, int whence) {
  auto* memory = static_cast<Memory*>(handle);
  memory->at = offset + (whence == SEEK_CUR   ? memory->at
                         : whence == SEEK_END ? memory->bytes.size()
                                              : 0);
  return memory->at;
}

int Close(thandle_t) {
  return 0;
}
toff_t Size(thandle_t handle) {
  return static_cast<Memory*>(handle)->bytes.size();
}

int Map(thandle_t handle, void** base, toff_t* size) {
  const Bytes bytes = static_cast<Memory*>(handle)->bytes;
  *base = const_cast<uint8_t*>(bytes.data());  // libtiff reads through it only
  *size = bytes.size();
  return 1;
}

void Unmap(thandle_t, void*, toff_t) {}

int Keep(std::string* to, const char* format, va_list arguments) {
  if (to->empty()) {
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    *to = text;
    while (!to->empty() && (to->back() == '.' || to->back() == '\n')) to->pop_back();
  }
  return 1;  // handled: libtiff prints nothing itself
}

int KeepError(TIFF*, void* data, const char*, const char* format, va_list arguments) {
  return Keep(&static_cast<Memory*>(data)->error, format, arguments);
}

int KeepWarning(TIFF*, void* data, const char*, const char* format, va_list arguments) {
  return Keep(&static_cast<Memory*>(data)->warning, format, arguments);
}

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

[[noreturn]] void ThrowDamaged(const Memory& memory) {
  throw ImageError("cannot be decoded (libtiff: " +
                   (memory.error.empty() ? std::string("damaged") : memory.error) +
                   "); the file is damaged or cut off, save the picture again");
}

Tiff Open(Memory* memory) {
  constexpr tmsize_t kMostAtOnce = tmsize_t{4} << 30;
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
      TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMostAtOnce);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), KeepError, memory);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), KeepWarning, memory);
  Tiff tiff(TIFFClientOpenExt("TIFF", "r", memory, Read, RefuseWrite, Seek, Close, Size, Map, Unmap,
                              options.get()));
  if (!tiff) ThrowDamaged(*memory);
  return tiff;
}

uint16_t Field16(TIFF* tiff, uint32_t tag, uint16_t otherwise) {
  uint16_t value = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : otherwise;
}

enum class Alpha { kNone, kStraight, kPremultiplied };

// How the current page stores its pixels.
struct Page {
  uint32_t width = 0;
  uint32_t height = 0;
  int bits = 1;
  int samples = 1;
  uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  uint16_t compression = COMPRESSION_NONE;
  bool separate = false;   // a plane for each sample
  bool converted = false;  // through libtiff's own conversion to RGB
  Alpha alpha = Alpha::kNone;
  Colour colour = Colour::kGrey;

  bool IsPalette() const { return photometric == PHOTOMETRIC_PALETTE; }
  int Channels() const { return tool::Channels(colour); }
};

Page ReadPage(TIFF* tiff) {
  Page page;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &page.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &page.height);
  page.bits = Field16(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  page.samples = Field16(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  page.compression = Field16(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  page.separate = page.samples > 1 &&
                  Field16(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  uint16_t photometric = 0;
  if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric) == 1) {
    page.photometric = photometric;
  } else {
    page.photometric = page.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
  }
  switch (page.photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
      page.colour = Colour::kGrey;
      break;
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_PALETTE:
      page.colour = Colour::kRgb;
      break;
    case PHOTOMETRIC_SEPARATED:
      page.colour = Colour::kCmyk;
      break;
    case PHOTOMETRIC_YCBCR:
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
      page.colour = Colour::kRgb;
      page.converted = true;
      break;
    default:
      throw ImageError("has a TIFF colour model that is not known here (" +
                       std::to_string(page.photometric) + "); save it as grey, RGB or CMYK");
  }
  if (page.converted) return page;
  const uint16_t format = Field16(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  if ((format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID) || page.bits < 1 ||
      page.bits > 16) {
    throw ImageError("has " + std::to_string(page.bits) +
                     "-bit samples of a kind that PDF cannot hold; save it with 8 or 16 bits");
  }
  const int colours = page.IsPalette() ? 1 : page.Channels();
  if (page.samples < colours || page.samples > 64 || (page.IsPalette() && page.bits > 8)) {
    throw ImageError("has " + std::to_string(page.samples) + " samples of " +
                     std::to_string(page.bits) +
                     " bits, which its colour model cannot be; save "
                     "it again");
  }
  uint16_t extraCount = 0;
  uint16_t* extras = nullptr;
  if (page.samples > colours &&
      TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extraCount, &extras) == 1 && extraCount > 0) {
    page.alpha = extras[0] == EXTRASAMPLE_UNASSALPHA   ? Alpha::kStraight
                 : extras[0] == EXTRASAMPLE_ASSOCALPHA ? Alpha::kPremultiplied
                                                       : Alpha::kNone;
  }
  return page;
}

Resolution ReadResolution(TIFF* tiff) {
  float x = 0, y = 0;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) != 1) x = 0;
  if (TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) != 1) y = x;
  const uint16_t unit = Field16(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  const double inches = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? 2.54 : 0;
  return {x * inches, y * inches};
}

Bytes ReadProfile(TIFF* tiff) {
  uint32_t size = 0;
  void* data = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &data) != 1) return {};
  return {static_cast<const uint8_t*>(data), size};
}

ImagePlan PlanPage(TIFF* tiff, const ReadLimits& limits) {
  const Page page = ReadPage(tiff);
  CheckSize(page.width, page.height, limits);
  if (TIFFIsTiled(tiff) != 0) {
    uint32_t width = 0, height = 0;
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &height);
    CheckSize(width, height, limits);
  }
  if (TIFFIsCODECConfigured(page.compression) == 0) {
    throw ImageError("has a TIFF compression that is not known here (" +
                     std::to_string(page.compression) + "); save it with LZW or Deflate");
  }
  ImagePlan plan;
  plan.format = Format::kTiff;
  plan.width = page.width;
  plan.height = page.height;
  plan.depth = page.converted ? 8 : page.bits;
  plan.colour = page.colour;
  plan.palette = page.IsPalette();
  plan.alpha = page.alpha != Alpha::kNone;
  plan.resolution = ReadResolution(tiff);
  plan.place = TIFFCurrentDirOffset(tiff);
  plan.decodeReason = "TIFF, which PDF does not know";
  uint16_t orientation = 1;
  if (TIFFGetField(tiff, TIFFTAG_ORIENTATION, &orientation) == 1) {
    ApplyExif({int{orientation}, {}}, &plan);
  }
  JudgeProfile(&plan, ReadProfile(tiff));
  return plan;
}

std::vector<ImagePlan> PlanTiff(Bytes file, const ReadLimits& limits) {
  constexpr size_t kMostPages = 65535;
  Memory memory{file, 0, {}, {}};
  const Tiff tiff = Open(&memory);
  std::vector<ImagePlan> plans;
  size_t reduced = 0;
  do {
    uint32_t kind = 0;
    TIFFGetField(tiff.get(), TIFFTAG_SUBFILETYPE, &kind);
    if ((kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0) {
      ++reduced;
      continue;
    }
    plans.push_back(PlanPage(tiff.get(), limits));
    if (plans.size() > kMostPages) throw ImageError("has more than 65535 pages; split it");
  } while (TIFFReadDirectory(tiff.get()) == 1);
  if (!memory.error.empty()) ThrowDamaged(memory);
  if (plans.empty()) throw ImageError("holds previews only, no picture; save or export it again");
  for (size_t i = 0; i < plans.size(); ++i) {
    plans[i].page = static_cast<unsigned>(i + 1);
    plans[i].pages = static_cast<unsigned>(plans.size());
  }
  if (reduced > 0) {
    plans[0].notes.push_back(
        {false, "its " + std::to_string(reduced) + " previews or masks were left out"});
  }
  if (!memory.warning.empty()) plans[0].notes.push_back({false, "libtiff: " + memory.warning});
  return plans;
}

// Rows of a page as they are packed in the file, read strip by strip or tile row by tile row.
class PageRows {
 public:
  PageRows(TIFF* tiff, const Page& page, const Memory& memory)
      : tiff_(tiff), memory_(memory), height_(page.height), tiled_(TIFFIsTiled(tiff) != 0) {
    if (tiled_) {
      TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &tileWidth_);
      TIFFGetField(tiff, TIFFTAG_TILELENGTH, &bandRows_);
      across_ = (page.width + tileWidth_ - 1) / tileWidth_;
      tileStride_ = static_cast<size_t>(TIFFTileRowSize(tiff));
      stride_ = tileStride_ * across_;
      tile_ = Buffer(static_cast<size_t>(TIFFTileSize(tiff)));
    } else {
      TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &bandRows_);
      bandRows_ = std::min(bandRows_, page.height);
      stride_ = static_cast<size_t>(TIFFScanlineSize(tiff));
    }
    if (bandRows_ == 0 || stride_ == 0) ThrowDamaged(memory);
    const int planes = page.separate ? page.samples : 1;
    for (int plane = 0; plane < planes; ++plane) bands_.emplace_back(stride_ * bandRows_);
  }

  // The row's bytes, of one plane where they are separate. Rows are asked for in order.
  const uint8_t* Row(uint32_t y, int plane) {
    const uint32_t band = y / bandRows_;
    if (band != loaded_) Load(band);
    return bands_[static_cast<size_t>(plane)].Data() + stride_ * (y % bandRows_);
  }
  size_t Stride() const { return stride_; }

 private:
  void Load(uint32_t band) {
    for (size_t plane = 0; plane < bands_.size(); ++plane) {
      tiled_ ? LoadTiles(band, plane) : LoadStrip(band, plane);
    }
    loaded_ = band;
  }

  void LoadStrip(uint32_t band, size_t plane) {
    const uint32_t rows = std::min(bandRows_, height_ - band * bandRows_);
    const auto wanted = static_cast<tmsize_t>(stride_ * rows);
    const uint32_t strip = TIFFComputeStrip(tiff_, band * bandRows_, static_cast<uint16_t>(plane));
    if (TIFFReadEncodedStrip(tiff_, strip, bands_[plane].Data(), wanted) != wanted) {
      ThrowDamaged(memory_);
    }
  }

  void LoadTiles(uint32_t band, size_t plane) {
    for (uint32_t column = 0; column < across_; ++column) {
      const uint32_t tile = TIFFComputeTile(tiff_, column * tileWidth_, band * bandRows_, 0,
                                            static_cast<uint16_t>(plane));
      const auto wanted = static_cast<tmsize_t>(tile_.Size());
      if (TIFFReadEncodedTile(tiff_, tile, tile_.Data(), wanted) != wanted) ThrowDamaged(memory_);
      for (uint32_t y = 0; y < bandRows_; ++y) {
        std::memcpy(bands_[plane].Data() + stride_ * y + tileStride_ * column,
                    tile_.Data() + tileStride_ * y, tileStride_);
      }
    }
  }

  TIFF* tiff_;
  const Memory& memory_;
  uint32_t height_;
  bool tiled_;
  uint32_t tileWidth_ = 0;
  uint32_t across_ = 0;
  uint32_t bandRows_ = 0;
  size_t tileStride_ = 0;
  size_t stride_ = 0;
  uint32_t loaded_ = UINT32_MAX;
  Buffer tile_;
  std::vector<Buffer> bands_;
};

// libtiff hands 16-bit samples out in the machine's order; in PDF they are big-endian.
void ToBigEndian(uint8_t* row, size_t size) {
  if constexpr (std::endian::native == std::endian::little) {
    for (size_t i = 0; i + 1 < size; i += 2) std::swap(row[i], row[i + 1]);
  }
}

void Invert(uint8_t* row, size_t size) {
  for (size_t i = 0; i < size; ++i) row[i] = static_cast<uint8_t>(~row[i]);
}

// Turns one page's rows into the pixels and the alpha of the PDF.
class PageConverter {
 public:
  PageConverter(TIFF* tiff, const Page& page, const Memory& memory)
      : page_(page), rows_(tiff, page, memory) {
    if (page.IsPalette()) ReadPalette(tiff, memory);
    // A file's row may be packed wider than the page (tiles), never narrower.
    const size_t samplesInRow = page.separate ? 1 : static_cast<size_t>(page.samples);
    if (rows_.Stride() * 8 < samplesInRow * page.width * static_cast<size_t>(page.bits)) {
      ThrowDamaged(memory);
    }
  }

  DecodedImage Convert() {
    const int bits = page_.IsPalette() ? 8 : PdfBits(page_.bits);
    DecodedImage image;
    image.pixels = Raster(page_.width, page_.height, bits, page_.Channels());
    if (page_.alpha != Alpha::kNone) {
      image.alpha.emplace(page_.width, page_.height, PdfBits(page_.bits), 1);
    }
    const bool asStored = !page_.IsPalette() && !page_.separate && bits == page_.bits &&
                          page_.samples == page_.Channels();
    const bool inverted =
        page_.photometric == PHOTOMETRIC_MINISWHITE || page_.colour == Colour::kCmyk;
    for (uint32_t y = 0; y < page_.height; ++y) {
      uint8_t* row = image.pixels.Row(y);
      const size_t size = image.pixels.Stride();
      if (asStored) {
        std::memcpy(row, rows_.Row(y, 0), size);
        if (bits == 16) ToBigEndian(row, size);
      } else {
        ConvertRow(y, &image);
      }
      // PDF's grey is white at its largest; its CMYK is declared with the inks inverted.
      if (inverted) Invert(row, size);
    }
    return image;
  }

 private:
  void ReadPalette(TIFF* tiff, const Memory& memory) {
    uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue) != 1) ThrowDamaged(memory);
    const size_t count = size_t{1} << page_.bits;
    // Entries have 16 bits; some writers put 8-bit numbers there.
    const bool small = std::all_of(red, red + count, [](uint16_t v) { return v < 256; }) &&
                       std::all_of(green, green + count, [](uint16_t v) { return v < 256; }) &&
                       std::all_of(blue, blue + count, [](uint16_t v) { return v < 256; });
    const int shift = small ? 0 : 8;
    for (size_t i = 0; i < count; ++i) {
      palette_[i] = {static_cast<uint8_t>(red[i] >> shift), static_cast<uint8_t>(green[i] >> shift),
                     static_cast<uint8_t>(blue[i] >> shift)};
    }
  }

  unsigned Sample(uint32_t y, size_t x, int sample) {
    const uint8_t* row = rows_.Row(y, page_.separate ? sample : 0);
    const size_t i =
        page_.separate ? x : x * static_cast<size_t>(page_.samples) + static_cast<size_t>(sample);
    if (page_.bits == 16) {
      uint16_t value = 0;
      std::memcpy(&value, row + 2 * i, 2);
      return value;
    }
    return SampleAt(row, i, page_.bits);
  }

  void ConvertRow(uint32_t y, DecodedImage* image) {
    const int bits = image->pixels.bits, channels = page_.IsPalette() ? 1 : page_.Channels();
    SampleWriter to(image->pixels.Row(y), bits);
    SampleWriter toAlpha(image->alpha ? image->alpha->Row(y) : nullptr,
                         image->alpha ? image->alpha->bits : 8);
    const unsigned most = MaxSample(page_.bits);
    for (uint32_t x = 0; x < page_.width; ++x) {
      const unsigned alpha = image->alpha ? Sample(y, x, channels) : most;
      if (image->alpha) toAlpha.Put(Rescale(alpha, page_.bits, image->alpha->bits));
      for (int c = 0; c < channels; ++c) {
        unsigned sample = Sample(y, x, c);
        if (page_.alpha == Alpha::kPremultiplied && alpha != 0) {
          sample = std::min(most, (sample * most + alpha / 2) / alpha);
        }
        if (page_.IsPalette()) {
          for (const uint8_t part : palette_[sample]) to.Put(part);
        } else {
          to.Put(Rescale(sample, page_.bits, bits));
        }
      }
    }
    to.Finish();
    if (image->alpha) toAlpha.Finish();
  }

  Page page_;
  PageRows rows_;
  std::array<std::array<uint8_t, 3>, 256> palette_{};
};

// YCbCr, CIELAB, LogLuv: libtiff's own conversion, 8-bit RGB.
DecodedImage ConvertThroughLibtiff(TIFF* tiff, const Page& page, const Memory& memory) {
  char text[1024] = "";
  TIFFRGBAImage converter;
  if (TIFFRGBAImageOK(tiff, text) == 0 || TIFFRGBAImageBegin(&converter, tiff, 1, text) == 0) {
    throw ImageError(std::string("cannot be decoded (libtiff: ") + text +
                     "); save it as grey, RGB or CMYK");
  }
  converter.req_orientation = converter.orientation;  // as stored: the page turns it
  Buffer pixels(size_t{page.width} * page.height * 4);
  const int ok = TIFFRGBAImageGet(&converter, reinterpret_cast<uint32_t*>(pixels.Data()),
                                  page.width, page.height);
  TIFFRGBAImageEnd(&converter);
  if (ok == 0) ThrowDamaged(memory);
  DecodedImage image;
  image.pixels = Raster(page.width, page.height, 8, 3);
  const auto* from = reinterpret_cast<const uint32_t*>(pixels.Data());
  uint8_t* to = image.pixels.bytes.Data();
  for (size_t i = 0; i < size_t{page.width} * page.height; ++i) {
    *to++ = static_cast<uint8_t>(TIFFGetR(from[i]));
    *to++ = static_cast<uint8_t>(TIFFGetG(from[i]));
    *to++ = static_cast<uint8_t>(TIFFGetB(from[i]));
  }
  return image;
}

DecodedImage DecodeTiff(const ImagePlan& plan, Bytes file, std::vector<Note>* notes) {
  Memory memory{file, 0, {}, {}};
  const Tiff tiff = Open(&memory);
  if (TIFFSetSubDirectory(tiff.get(), plan.place) != 1) ThrowDamaged(memory);
  Page page = ReadPage(tiff.get());
  if (page.width != plan.width || page.height != plan.height) ThrowDamaged(memory);
  if (page.photometric == PHOTOMETRIC_YCBCR && page.compression == COMPRESSION_JPEG &&
      !page.separate && page.bits == 8 && page.samples == 3) {
    TIFFSetField(tiff.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    page.converted = false;  // libjpeg does the conversion
  }
  DecodedImage image = page.converted ? ConvertThroughLibtiff(tiff.get(), page, memory)
                                      : PageConverter(tiff.get(), page, memory).Convert();
  if (!memory.error.empty()) ThrowDamaged(memory);
  if (!memory.warning.empty()) notes->push_back({false, "libtiff: " + memory.warning});
  return image;
}

Buffer TiffProfile(const ImagePlan& plan, Bytes file) {
  Memory memory{file, 0, {}, {}};
  const Tiff tiff = Open(&memory);
  if (TIFFSetSubDirectory(tiff.get(), plan.place) != 1) return {};
  return Buffer::CopyOf(ReadProfile(tiff.get()));
}

bool IsTiff(Bytes head) {
  return StartsWith(head, "II*\0"sv) || StartsWith(head, "MM\0*"sv) ||
         StartsWith(head, "II+\0"sv) || StartsWith(head, "MM\0+"sv);  // the two with 64 bits
}

}  // namespace

const Reader kTiffReader{Format::kTiff, "TIFF", IsTiff, PlanTiff, DecodeTiff, TiffProfile};

}  // namespace tool
