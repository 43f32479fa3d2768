// album_writer.h - from the plan to the PDF.
#ifndef JTPDF_TOOL_ALBUM_WRITER_H
#define JTPDF_TOOL_ALBUM_WRITER_H

#include <cstddef>

#include "album.h"
#include "console.h"
#include "options.h"
#include "output.h"

namespace pictures::tool {

// An input that failed while it was written; reported already.
struct BadInput {};

// Writes all pages and commits the output. With options.skipBad inputs that fail are reported and
// left out; without it the first throws a BadInput. Returns how many failed here. Throws
// OutputError.
size_t WriteAlbum(const AlbumPlan& plan, const Options& options, Output& output, Console& console);

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_ALBUM_WRITER_H
