// trailer - the cross-reference table and the trailer, the end of every file:
//
//     xref
//     0 5
//     0000000000 65535 f
//     0000000017 00000 n
//     ...
//     trailer
//     <<
//     /Size 5
//     /Root 3 0 R
//     /Info 4 0 R
//     >>
//     startxref
//     431
//     %%EOF
#ifndef JTPDF_OUTPUT_TRAILER_H
#define JTPDF_OUTPUT_TRAILER_H

#include "output/object_writer.h"

// An infoObject of 0 stands for none.
void WriteTrailer(ObjectWriter& out, int infoObject, int rootObject);

#endif  // JTPDF_OUTPUT_TRAILER_H
