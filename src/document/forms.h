// forms - the canvas as a form XObject (ISO 32000-1, 8.10).
#ifndef JTPDF_DOCUMENT_FORMS_H
#define JTPDF_DOCUMENT_FORMS_H

#include "document/content_encoder.h"
#include "graphics/canvas.h"
#include "output/object_writer.h"

// Writes what is on the canvas, clears it and returns the form's number. graphicsState is that of
// the document.
int WriteForm(ObjectWriter& out, JTPDFCanvas& canvas, int graphicsState,
              const ContentEncoder& encoder);

#endif  // JTPDF_DOCUMENT_FORMS_H
