// row_filters.h - the filters of PNG rows (ISO/IEC 15948, 9), predictor 15 of PDF.
#ifndef JTPDF_PICTURES_ROW_FILTERS_H
#define JTPDF_PICTURES_ROW_FILTERS_H

#include "bytes.h"

namespace pictures {

// By what the best filter of a row is known: the sizes of its differences, which are soon added up,
// or the repetitions of pairs of bytes, which tell more of what Deflate makes of them.
enum class BestRow { kSmallest, kMostRepetitive };

// Filters `rows` rows of `stride` bytes, whose pixels have `pixelSize` bytes, each by the filter
// that is best. Every row of the result begins with its filter's number.
Buffer FilterRows(Bytes bytes, size_t stride, size_t rows, size_t pixelSize, BestRow best);

}  // namespace pictures

#endif  // JTPDF_PICTURES_ROW_FILTERS_H
