#include "formats/tiff_stored.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <utility>
#include <vector>

#include "formats/samples.h"
#include "formats/tiff_jpeg.h"
#include "zlib_stream.h"

namespace pictures {
namespace {

uint32_t Field32(TIFF* tiff, uint32_t tag) {
  uint32_t value = 0;
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

uint16_t Field16(TIFF* tiff, uint32_t tag) {
  uint16_t value = 0;
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

// Empty where it is not all there.
Bytes Strip(TIFF* tiff, uint32_t strip, Bytes bytes) {
  return Slice(bytes, TIFFGetStrileOffset(tiff, strip), TIFFGetStrileByteCount(tiff, strip));
}

bool IsFlate(const TiffPage& page) {
  return page.compression == COMPRESSION_ADOBE_DEFLATE || page.compression == COMPRESSION_DEFLATE;
}

bool IsGrey(const TiffPage& page) {
  return page.photometric == PHOTOMETRIC_MINISWHITE || page.photometric == PHOTOMETRIC_MINISBLACK;
}

// ---- Fax -------------------------------------------------------------------------------------

std::array<uint8_t, 256> TurnedBits() {
  std::array<uint8_t, 256> turned{};
  for (unsigned i = 0; i < 256; ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      if ((i >> bit & 1u) != 0) turned[i] = static_cast<uint8_t>(turned[i] | 0x80u >> bit);
    }
  }
  return turned;
}

Buffer TurnBits(Bytes bytes) {
  static const std::array<uint8_t, 256> kTurned = TurnedBits();
  Buffer turned(bytes.size());
  std::transform(bytes.begin(), bytes.end(), turned.Data(), [](uint8_t b) { return kTurned[b]; });
  return turned;
}

// Whether group 4 data ends with two end-of-line codes, as it must, before what fills its last
// byte.
bool EndsAsGroup4(Bytes data) {
  while (!data.empty() && data.back() == 0) data = data.first(data.size() - 1);
  if (data.size() < 4) return false;
  const uint32_t last = Be32(&data[data.size() - 4]);
  return (last >> std::countr_zero(last) & 0xFFFFFFu) == 0x001001u;
}

// Whether group 3 data begins with an end-of-line code at its first bit. Behind bits that fill up a
// byte MuPDF would complain of it, and without it Ghostscript shows nothing.
bool BeginsAsGroup3(Bytes data, bool turned) {
  if (data.size() < 2 || data[0] != 0) return false;
  return turned ? (data[1] & 0x0F) == 0x08 : (data[1] & 0xF0) == 0x10;
}

std::string WhyDecodeFax(TIFF* tiff, const TiffPage& page, Bytes strip) {
  if (!IsGrey(page) || page.bits != 1) return "TIFF with fax data that has colours";
  if (page.compression == COMPRESSION_CCITTRLE) return {};
  const bool group4 = page.compression == COMPRESSION_CCITTFAX4;
  const uint32_t options = Field32(tiff, group4 ? TIFFTAG_GROUP4OPTIONS : TIFFTAG_GROUP3OPTIONS);
  constexpr uint32_t kUncompressed = GROUP3OPT_UNCOMPRESSED;
  static_assert(kUncompressed == GROUP4OPT_UNCOMPRESSED);
  if ((options & kUncompressed) != 0) return "TIFF with fax data of an uncompressed mode";
  if (!group4 && !BeginsAsGroup3(strip, Field16(tiff, TIFFTAG_FILLORDER) == FILLORDER_LSB2MSB)) {
    return "TIFF with fax data that begins within a byte";
  }
  return {};
}

// Whether it is of group 4 and whole, as far as that can be told without decoding it: it has no
// redundancy but its end, which a strip that is cut off lacks. With it the data is taken as it is,
// as JPEG is. Decoding it would take a hundred times as long.
bool DescribeFax(const FaxStrip& fax, Bytes bytes, EncodedStream* stream) {
  stream->filter = Filter::kCcitt;
  stream->ccitt = fax.parameters;
  stream->pieces = {Slice(bytes, fax.offset, fax.size)};
  if (fax.turned) stream->Own(TurnBits(stream->pieces[0]));
  stream->ccitt.endOfBlock = fax.parameters.k < 0 && EndsAsGroup4(stream->pieces[0]);
  return stream->ccitt.endOfBlock;
}

// ---- JPEG ------------------------------------------------------------------------------------

std::optional<JoinedJpeg> JoinStrips(TIFF* tiff, const TiffPage& page, Bytes bytes) {
  if (page.height > 0xFFFF) return std::nullopt;  // no JPEG is: nor are there more strips
  JpegStrips strips;
  strips.width = page.width;
  strips.height = page.height;
  strips.rowsPerStrip = std::min(Field32(tiff, TIFFTAG_ROWSPERSTRIP), page.height);
  strips.components = page.samples;
  strips.ycc = page.photometric == PHOTOMETRIC_YCBCR;
  uint32_t size = 0;
  const void* tables = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_JPEGTABLES, &size, &tables) == 1) {
    strips.tables = {static_cast<const uint8_t*>(tables), size};
  }
  const uint32_t count = TIFFNumberOfStrips(tiff);
  for (uint32_t i = 0; i < count; ++i) strips.strips.push_back(Strip(tiff, i, bytes));
  return JoinJpegStrips(strips);
}

std::string WhyDecodeJpeg(TIFF* tiff, const TiffPage& page, Bytes bytes) {
  const bool plain =
      IsGrey(page) ||
      ((page.photometric == PHOTOMETRIC_RGB || page.photometric == PHOTOMETRIC_YCBCR) &&
       page.samples == 3) ||
      (page.photometric == PHOTOMETRIC_SEPARATED && page.samples == 4);
  if (!plain || page.bits != 8) return "TIFF with JPEG of other colours than PDF's";
  if (!JoinStrips(tiff, page, bytes)) return "TIFF with strips that are not of one JPEG";
  return {};
}

void DescribeJpeg(TIFF* tiff, const TiffPage& page, Bytes bytes, EncodedStream* stream) {
  std::optional<JoinedJpeg> joined = JoinStrips(tiff, page, bytes);
  stream->filter = Filter::kDct;
  stream->owned = std::move(joined.value().head);
  stream->pieces = std::move(joined->pieces);
}

// ---- Deflate, LZW ----------------------------------------------------------------------------

std::string WhyDecodePacked(TIFF* tiff, const TiffPage& page, Bytes strip) {
  if (page.converted || page.IsLab()) return "TIFF with colours that PDF does not know";
  if (page.bits != PdfBits(page.bits)) return "TIFF with samples of other depths than PDF's";
  if (page.bits == 16 && TIFFIsBigEndian(tiff) == 0) return "TIFF with samples in reverse order";
  if (Field16(tiff, TIFFTAG_FILLORDER) != FILLORDER_MSB2LSB)
    return "TIFF with bits in reverse order";
  const uint16_t predictor = Field16(tiff, TIFFTAG_PREDICTOR);
  // Of 16 bits Poppler does not know it either.
  if (predictor > PREDICTOR_HORIZONTAL || (predictor == PREDICTOR_HORIZONTAL && page.bits != 8)) {
    return "TIFF with a predictor that readers do not know";
  }
  // It begins by clearing its table: nine bits, the first of them set. An old kind has them turned.
  if (page.compression == COMPRESSION_LZW &&
      (strip.size() < 2 || strip[0] != 0x80 || strip[1] >= 0x80)) {
    return "TIFF with an old kind of LZW";
  }
  return {};
}

void DescribePacked(TiffFile& file, const TiffPage& page, EncodedStream* stream) {
  stream->filter = IsFlate(page) ? Filter::kFlate : Filter::kLzw;
  stream->predictor = Field16(file.Get(), TIFFTAG_PREDICTOR) == PREDICTOR_HORIZONTAL ? 2 : 1;
  if (page.IsPalette()) {
    const std::vector<TiffColour> palette = ReadTiffPalette(file, page);
    stream->palette = Buffer(palette.size() * 3);
    uint8_t* to = stream->palette.Data();
    for (const TiffColour& colour : palette) to = std::copy(colour.begin(), colour.end(), to);
  }
}

// ---- All -------------------------------------------------------------------------------------

// Decodes row by row and keeps nothing. False where libtiff has anything to say of it.
bool RowsAreWhole(TiffFile& file, const TiffPage& page) {
  file.TakeWarning();  // of its fields
  Buffer row(static_cast<size_t>(TIFFScanlineSize64(file.Get())));
  for (uint32_t y = 0; y < page.height; ++y) {
    if (TIFFReadScanline(file.Get(), row.Data(), y, 0) != 1 || file.HasError()) return false;
  }
  return file.TakeWarning().empty();
}

bool IsWhole(TiffFile& file, const TiffPage& page, EncodedStream* stream) {
  if (stream->filter == Filter::kDct) return true;
  if (stream->filter == Filter::kFlate) {
    const uint64_t size = TIFFScanlineSize64(file.Get()) * page.height;
    return InflatedSize(stream->pieces, 2 * size + 65536).value_or(0) >= size;
  }
  if (stream->filter == Filter::kCcitt && stream->ccitt.endOfBlock) return true;
  return RowsAreWhole(file, page);
}

}  // namespace

std::string WhyDecodeTiff(TiffFile& file, const TiffPage& page, Bytes bytes) {
  TIFF* tiff = file.Get();
  const bool jpeg = page.compression == COMPRESSION_JPEG;
  if (!page.IsFax() && !jpeg && !IsFlate(page) && page.compression != COMPRESSION_LZW) {
    return "TIFF with data that PDF does not know";
  }
  if (TIFFIsTiled(tiff) != 0) return "TIFF in tiles";
  if (page.separate) return "TIFF with a plane for each colour";
  if (page.samples != page.ColourSamples()) return "TIFF with more samples than colours";
  if (jpeg) return WhyDecodeJpeg(tiff, page, bytes);
  if (TIFFNumberOfStrips(tiff) != 1) return "TIFF in several strips";
  const Bytes strip = Strip(tiff, 0, bytes);
  if (strip.empty()) return "TIFF that is cut off";
  return page.IsFax() ? WhyDecodeFax(tiff, page, strip) : WhyDecodePacked(tiff, page, strip);
}

std::optional<FaxStrip> FindFax(TiffFile& file, const TiffPage& page) {
  if (!page.IsFax()) return std::nullopt;
  TIFF* tiff = file.Get();
  FaxStrip fax;
  fax.offset = TIFFGetStrileOffset(tiff, 0);
  fax.size = TIFFGetStrileByteCount(tiff, 0);
  fax.turned = Field16(tiff, TIFFTAG_FILLORDER) == FILLORDER_LSB2MSB;
  // A white run stands for zeros, and these mean black here.
  fax.parameters.blackIs1 = page.photometric == PHOTOMETRIC_MINISBLACK;
  fax.parameters.byteAligned = page.compression == COMPRESSION_CCITTRLE;
  if (page.compression == COMPRESSION_CCITTFAX4) {
    fax.parameters.k = -1;
  } else if (page.compression == COMPRESSION_CCITTFAX3) {
    const bool both = (Field32(tiff, TIFFTAG_GROUP3OPTIONS) & GROUP3OPT_2DENCODING) != 0;
    fax.parameters.k = both ? 1 : 0;
    fax.parameters.endOfLine = true;
  } else {
    fax.parameters.k = 0;
  }
  return fax;
}

std::optional<EncodedStream> StoredFaxStream(const ImagePlan& plan, Bytes bytes) {
  EncodedStream stream;
  stream.width = plan.width;
  stream.height = plan.height;
  stream.bits = plan.depth;
  stream.colour = plan.colour;
  if (!plan.fax || !DescribeFax(*plan.fax, bytes, &stream)) return std::nullopt;
  return stream;
}

uint64_t StoredTiffSize(TIFF* tiff) {
  uint64_t size = 0;
  const uint32_t count = TIFFNumberOfStrips(tiff);
  for (uint32_t i = 0; i < count; ++i) size += TIFFGetStrileByteCount(tiff, i);
  return size;
}

std::optional<EncodedStream> StoredTiffStream(TiffFile& file, const TiffPage& page, Bytes bytes) {
  EncodedStream stream;
  stream.width = page.width;
  stream.height = page.height;
  stream.bits = page.bits;
  stream.colour = page.colour;
  if (page.compression == COMPRESSION_JPEG) {
    DescribeJpeg(file.Get(), page, bytes, &stream);
  } else if (const std::optional<FaxStrip> fax = FindFax(file, page)) {
    DescribeFax(*fax, bytes, &stream);
  } else {
    stream.pieces = {Strip(file.Get(), 0, bytes)};
    DescribePacked(file, page, &stream);
  }
  // Fax data says by its codes what is black.
  if (page.photometric == PHOTOMETRIC_MINISWHITE && !page.IsFax()) stream.decode = {1, 0};
  if (!IsWhole(file, page, &stream)) return std::nullopt;
  return stream;
}

}  // namespace pictures
