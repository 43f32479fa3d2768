// tiff_stored.h - what a TIFF page stores that a PDF can hold as it is: fax data, JPEG, Deflate,
// LZW.
#ifndef JTPDF_PICTURES_TIFF_STORED_H
#define JTPDF_PICTURES_TIFF_STORED_H

#include <optional>
#include <string>

#include "bytes.h"
#include "formats/tiff_file.h"
#include "formats/tiff_page.h"
#include "image.h"

namespace pictures {

// Why the file's current page must be decoded; empty where its bytes pass through. Looks at headers
// alone.
std::string WhyDecodeTiff(TiffFile& file, const TiffPage& page, Bytes bytes);

// Where the file's current page, which passes through, has fax data; nothing for other data.
std::optional<FaxStrip> FindFax(TiffFile& file, const TiffPage& page);

// The page of such a plan where that tells all there is to know: group 4 that is whole by its end.
std::optional<EncodedStream> StoredFaxStream(const ImagePlan& plan, Bytes bytes);

// The bytes of all its strips.
uint64_t StoredTiffSize(TIFF* tiff);

// Describes a page that passes through as an image of the PDF: views into `bytes`. What a format
// can tell of damage is looked for first, without keeping a pixel; nothing where there is some, and
// decoding says which.
std::optional<EncodedStream> StoredTiffStream(TiffFile& file, const TiffPage& page, Bytes bytes);

}  // namespace pictures

#endif  // JTPDF_PICTURES_TIFF_STORED_H
