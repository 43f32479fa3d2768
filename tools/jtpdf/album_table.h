// album_table.h - the table of --dry-run.
#ifndef JTPDF_TOOL_ALBUM_TABLE_H
#define JTPDF_TOOL_ALBUM_TABLE_H

#include <string>

#include "album.h"
#include "options.h"

namespace pictures::tool {

std::string DescribeAlbum(const AlbumPlan& plan, const Options& options);

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_ALBUM_TABLE_H
