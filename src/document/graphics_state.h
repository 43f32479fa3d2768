// graphics_state - the one graphics state of a document, "/GS0" of every form.
#ifndef JTPDF_DOCUMENT_GRAPHICS_STATE_H
#define JTPDF_DOCUMENT_GRAPHICS_STATE_H

#include "output/object_writer.h"

// Writes it and returns its number.
int WriteGraphicsState(ObjectWriter& out);

#endif  // JTPDF_DOCUMENT_GRAPHICS_STATE_H
