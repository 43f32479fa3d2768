#include "formats/tiff_page.h"

#include <algorithm>
#include <string>

#include "formats/samples.h"

namespace pictures {
namespace {

uint16_t Field16(TIFF* tiff, uint32_t tag, uint16_t otherwise) {
  uint16_t value = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : otherwise;
}

void SetColour(TiffPage* page) {
  switch (page->photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
      page->colour = Colour::kGrey;
      break;
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_PALETTE:
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
      page->colour = Colour::kRgb;
      break;
    case PHOTOMETRIC_SEPARATED:
      page->colour = Colour::kCmyk;
      break;
    case PHOTOMETRIC_YCBCR:
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
      page->colour = Colour::kRgb;
      page->converted = true;
      break;
    default:
      throw ImageError("has a TIFF colour model that is not known here (" +
                       std::to_string(page->photometric) + "); save it as grey, RGB or CMYK");
  }
}

void CheckSamples(const TiffPage& page, uint16_t format) {
  const std::string bits = std::to_string(page.bits) + "-bit samples";
  if (format == SAMPLEFORMAT_INT && !page.IsLab()) {
    throw ImageError("has signed " + bits + ", which PDF cannot hold; save it with unsigned ones");
  }
  if (format > SAMPLEFORMAT_VOID || format == SAMPLEFORMAT_IEEEFP) {
    throw ImageError("has floating-point or complex " + bits +
                     ", which PDF cannot hold; save it with 8 or 16 bits of whole numbers");
  }
  if (page.bits < 1 || page.bits > 16) {
    throw ImageError("has " + bits + ", and PDF holds up to 16 bits; save it with 8 or 16 bits");
  }
  if (page.samples < page.ColourSamples() || page.samples > 64 ||
      (page.IsPalette() && page.bits > 8) || (page.IsLab() && page.bits != 8 && page.bits != 16)) {
    throw ImageError("has " + std::to_string(page.samples) + " samples of " +
                     std::to_string(page.bits) +
                     " bits, which its colour model cannot be; save it again");
  }
}

void FindAlpha(const TiffFile& file, TiffPage* page, std::vector<Note>* notes) {
  const int colours = page->ColourSamples();
  int left = page->samples - colours;
  if (left == 0) return;
  uint16_t count = 0;
  uint16_t* kinds = nullptr;
  if (TIFFGetField(file.Get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) != 1) count = 0;
  for (int i = 0; i < std::min<int>(count, left) && page->alpha == TiffPage::Alpha::kNone; ++i) {
    if (kinds[i] == EXTRASAMPLE_UNSPECIFIED) continue;
    page->alpha = kinds[i] == EXTRASAMPLE_ASSOCALPHA ? TiffPage::Alpha::kPremultiplied
                                                     : TiffPage::Alpha::kStraight;
    page->alphaSample = colours + i;
  }
  if (page->photometric == PHOTOMETRIC_RGB && page->samples == 4 &&
      !file.Declares(TIFFTAG_EXTRASAMPLES)) {
    page->alpha = TiffPage::Alpha::kStraight;
    page->alphaSample = colours;
    notes->push_back({true,
                      "does not say what the fourth sample of its pixels is; it was taken for "
                      "their opacity, as other programs do"});
  }
  left -= page->alpha == TiffPage::Alpha::kNone ? 0 : 1;
  if (left > 0) {
    notes->push_back({true, "its pixels hold " + std::to_string(left) +
                                (left == 1 ? " sample" : " samples") +
                                " besides colour and opacity, left out"});
  }
}

}  // namespace

int TiffPage::PdfDepth() const {
  return converted || IsPalette() ? 8 : PdfBits(bits);
}

TiffPage ReadTiffPage(const TiffFile& file, std::vector<Note>* notes) {
  TIFF* tiff = file.Get();
  TiffPage page;
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
  SetColour(&page);
  if (page.converted) return page;
  CheckSamples(page, Field16(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT));
  FindAlpha(file, &page, notes);
  return page;
}

double DecodingMemory(const TiffPage& page, TIFF* tiff) {
  const double pixels = static_cast<double>(page.width) * page.height;
  if (page.converted) return pixels * (4 + 3);  // RGBA, then RGB
  const int results = Channels(page.colour) + (page.alpha == TiffPage::Alpha::kNone ? 0 : 1);
  double band = static_cast<double>(TIFFScanlineSize64(tiff));
  uint32_t rows = page.height;
  if (TIFFIsTiled(tiff) != 0) {
    uint32_t width = 1;
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &rows);
    const uint32_t across = page.width / std::max(width, 1u) + 2;
    band = static_cast<double>(TIFFTileRowSize64(tiff)) * across;
  } else {
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
    rows = std::min(rows, page.height);
  }
  return pixels * results * page.PdfDepth() / 8 + band * rows * (page.separate ? page.samples : 1);
}

}  // namespace pictures
