// tiff_pixels.cpp - the pixels of a TIFF page: strips or tiles, decoded by libtiff.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <string>

#include "formats/lab.h"
#include "formats/samples.h"
#include "formats/tiff_page.h"

namespace pictures {
namespace {

// Rows of a page as they are packed in the file, read strip by strip or tile row by tile row.
class PageRows {
 public:
  PageRows(TiffFile& file, const TiffPage& page)
      : file_(file), tiff_(file.Get()), height_(page.height), tiled_(TIFFIsTiled(tiff_) != 0) {
    if (tiled_) {
      TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &tileWidth_);
      TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &bandRows_);
      across_ = (page.width + tileWidth_ - 1) / tileWidth_;
      tileStride_ = static_cast<size_t>(TIFFTileRowSize(tiff_));
      stride_ = tileStride_ * across_;
      tile_ = Buffer(static_cast<size_t>(TIFFTileSize(tiff_)));
    } else {
      TIFFGetFieldDefaulted(tiff_, TIFFTAG_ROWSPERSTRIP, &bandRows_);
      bandRows_ = std::min(bandRows_, page.height);
      stride_ = static_cast<size_t>(TIFFScanlineSize(tiff_));
    }
    if (bandRows_ == 0 || stride_ == 0) file.ThrowDamaged();
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
      file_.ThrowDamaged();
    }
  }

  void LoadTiles(uint32_t band, size_t plane) {
    for (uint32_t column = 0; column < across_; ++column) {
      const uint32_t tile = TIFFComputeTile(tiff_, column * tileWidth_, band * bandRows_, 0,
                                            static_cast<uint16_t>(plane));
      const auto wanted = static_cast<tmsize_t>(tile_.Size());
      if (TIFFReadEncodedTile(tiff_, tile, tile_.Data(), wanted) != wanted) file_.ThrowDamaged();
      for (uint32_t y = 0; y < bandRows_; ++y) {
        std::memcpy(bands_[plane].Data() + stride_ * y + tileStride_ * column,
                    tile_.Data() + tileStride_ * y, tileStride_);
      }
    }
  }

  TiffFile& file_;
  TIFF* tiff_;
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
  PageConverter(TiffFile& file, const TiffPage& page) : page_(page), rows_(file, page) {
    if (page.IsPalette()) palette_ = ReadTiffPalette(file, page);
    // A file's row may be packed wider than the page (tiles), never narrower.
    const size_t samplesInRow = page.separate ? 1 : static_cast<size_t>(page.samples);
    if (rows_.Stride() * 8 < samplesInRow * page.width * static_cast<size_t>(page.bits)) {
      file.ThrowDamaged();
    }
  }

  DecodedImage Convert() {
    const int bits = page_.PdfDepth();
    DecodedImage image;
    image.pixels = Raster(page_.width, page_.height, bits, Channels(page_.colour));
    if (page_.alpha != TiffPage::Alpha::kNone) {
      image.alpha.emplace(page_.width, page_.height, PdfBits(page_.bits), 1);
    }
    const bool asStored = !page_.IsPalette() && !page_.IsLab() && !page_.separate &&
                          bits == page_.bits && page_.samples == Channels(page_.colour);
    const bool inverted =
        page_.photometric == PHOTOMETRIC_MINISWHITE || page_.colour == Colour::kCmyk;
    for (uint32_t y = 0; y < page_.height; ++y) {
      uint8_t* row = image.pixels.Row(y);
      const size_t size = image.pixels.Stride();
      if (asStored) {
        std::memcpy(row, rows_.Row(y, 0), size);
        if (bits == 16) ToBigEndian(row, size);
      } else {
        if (image.alpha) ConvertAlpha(y, &*image.alpha);
        ConvertRow(y, &image.pixels);
      }
      // PDF's grey is white at its largest; its CMYK is declared with the inks inverted.
      if (inverted) Invert(row, size);
    }
    return image;
  }

 private:
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

  // A sample of a colour, as it is without its opacity.
  unsigned ColourSample(uint32_t y, size_t x, int sample) {
    const unsigned stored = Sample(y, x, sample);
    if (page_.alpha != TiffPage::Alpha::kPremultiplied) return stored;
    return Unpremultiply(stored, page_.bits, Sample(y, x, page_.alphaSample), page_.bits);
  }

  void ConvertAlpha(uint32_t y, Raster* alpha) {
    SampleWriter to(alpha->Row(y), alpha->bits);
    for (uint32_t x = 0; x < page_.width; ++x) {
      to.Put(Rescale(Sample(y, x, page_.alphaSample), page_.bits, alpha->bits));
    }
    to.Finish();
  }

  void ConvertRow(uint32_t y, Raster* pixels) {
    SampleWriter to(pixels->Row(y), pixels->bits);
    for (uint32_t x = 0; x < page_.width; ++x) {
      if (page_.IsPalette()) {  // a number is no amount of light: opacity leaves it alone
        for (const uint8_t part : palette_[Sample(y, x, 0)]) to.Put(part);
      } else if (page_.IsLab()) {
        for (const unsigned part : FromLab(y, x)) to.Put(part);
      } else {
        for (int c = 0; c < Channels(page_.colour); ++c) {
          to.Put(Rescale(ColourSample(y, x, c), page_.bits, pixels->bits));
        }
      }
    }
    to.Finish();
  }

  // CIELAB has signed a and b; ICC's kind has them from 0 up, and in 16 bits other steps.
  std::array<unsigned, 3> FromLab(uint32_t y, size_t x) {
    const bool icc = page_.photometric == PHOTOMETRIC_ICCLAB, wide = page_.bits == 16;
    const double step = wide ? 256 : 1, white = wide ? (icc ? 65280 : 65535) : 255;
    const auto colour = [&](int sample) {
      const auto stored = static_cast<int>(Sample(y, x, sample));
      const int half = 1 << (page_.bits - 1);
      return (icc || stored >= half ? stored - (icc ? half : 2 * half) : stored) / step;
    };
    std::array<unsigned, 3> rgb;
    const auto shown = LabToRgb(Sample(y, x, 0) * 100 / white, colour(1), colour(2));
    for (size_t i = 0; i < 3; ++i) {
      rgb[i] = static_cast<unsigned>(std::lround(shown[i] * MaxSample(page_.bits)));
    }
    return rgb;
  }

  TiffPage page_;
  PageRows rows_;
  std::vector<TiffColour> palette_;
};

// YCbCr, LogLuv: libtiff's own conversion, 8-bit RGB.
DecodedImage ConvertThroughLibtiff(TiffFile& file, const TiffPage& page) {
  char text[1024] = "";
  TIFFRGBAImage converter;
  if (TIFFRGBAImageOK(file.Get(), text) == 0 ||
      TIFFRGBAImageBegin(&converter, file.Get(), 1, text) == 0) {
    throw ImageError(std::string("cannot be decoded (libtiff: ") + text +
                     "); save it as grey, RGB or CMYK");
  }
  converter.req_orientation = converter.orientation;  // as stored: the page turns it
  Buffer pixels(size_t{page.width} * page.height * 4);
  const int ok = TIFFRGBAImageGet(&converter, reinterpret_cast<uint32_t*>(pixels.Data()),
                                  page.width, page.height);
  TIFFRGBAImageEnd(&converter);
  if (ok == 0) file.ThrowDamaged();
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

}  // namespace

std::vector<TiffColour> ReadTiffPalette(TiffFile& file, const TiffPage& page) {
  uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
  if (TIFFGetField(file.Get(), TIFFTAG_COLORMAP, &red, &green, &blue) != 1) file.ThrowDamaged();
  const size_t count = size_t{1} << page.bits;
  // Entries have 16 bits; some writers put 8-bit numbers there.
  const bool small = std::all_of(red, red + count, [](uint16_t v) { return v < 256; }) &&
                     std::all_of(green, green + count, [](uint16_t v) { return v < 256; }) &&
                     std::all_of(blue, blue + count, [](uint16_t v) { return v < 256; });
  const int shift = small ? 0 : 8;
  std::vector<TiffColour> palette(count);
  for (size_t i = 0; i < count; ++i) {
    palette[i] = {static_cast<uint8_t>(red[i] >> shift), static_cast<uint8_t>(green[i] >> shift),
                  static_cast<uint8_t>(blue[i] >> shift)};
  }
  return palette;
}

DecodedImage DecodeTiffPage(TiffFile& file, TiffPage page) {
  if (page.photometric == PHOTOMETRIC_YCBCR && page.compression == COMPRESSION_JPEG &&
      !page.separate && page.bits == 8 && page.samples == 3) {
    TIFFSetField(file.Get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    page.converted = false;  // libjpeg does the conversion
  }
  return page.converted ? ConvertThroughLibtiff(file, page) : PageConverter(file, page).Convert();
}

}  // namespace pictures
