// tiff_page.h - how one page of a TIFF file stores its pixels, and their way into those of a PDF.
//
// Pixels are taken as the file stores them, at their own depth; CIELAB becomes RGB here. The other
// colour models that need arithmetic (YCbCr that is not JPEG, LogLuv) come through libtiff's own
// conversion to 8-bit RGB.
#ifndef JTPDF_PICTURES_TIFF_PAGE_H
#define JTPDF_PICTURES_TIFF_PAGE_H

#include <array>
#include <cstdint>
#include <vector>

#include "formats/tiff_file.h"
#include "image.h"

namespace pictures {

struct TiffPage {
  enum class Alpha { kNone, kStraight, kPremultiplied };

  uint32_t width = 0;
  uint32_t height = 0;
  int bits = 1;
  int samples = 1;
  uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  uint16_t compression = COMPRESSION_NONE;
  bool separate = false;   // a plane for each sample
  bool converted = false;  // through libtiff's own conversion to RGB
  Alpha alpha = Alpha::kNone;
  int alphaSample = 0;  // its number
  Colour colour = Colour::kGrey;

  bool IsPalette() const { return photometric == PHOTOMETRIC_PALETTE; }
  bool IsLab() const {
    return photometric == PHOTOMETRIC_CIELAB || photometric == PHOTOMETRIC_ICCLAB;
  }
  bool IsFax() const {
    return compression == COMPRESSION_CCITTRLE || compression == COMPRESSION_CCITTFAX3 ||
           compression == COMPRESSION_CCITTFAX4;
  }
  // Of those that the colour is made of.
  int ColourSamples() const { return IsPalette() ? 1 : Channels(colour); }
  // The depth of the PDF's image.
  int PdfDepth() const;
};

// The facts of the file's current page. Throws an ImageError for what cannot become an image.
TiffPage ReadTiffPage(const TiffFile& file, std::vector<Note>* notes);

// The colours of a palette, red first.
using TiffColour = std::array<uint8_t, 3>;
std::vector<TiffColour> ReadTiffPalette(TiffFile& file, const TiffPage& page);

// About the most memory that decoding it takes. A double: sizes that lie overflow integers.
double DecodingMemory(const TiffPage& page, TIFF* tiff);

DecodedImage DecodeTiffPage(TiffFile& file, TiffPage page);

}  // namespace pictures

#endif  // JTPDF_PICTURES_TIFF_PAGE_H
