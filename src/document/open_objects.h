// open_objects - objects of which the host says what is in them.
#ifndef JTPDF_DOCUMENT_OPEN_OBJECTS_H
#define JTPDF_DOCUMENT_OPEN_OBJECTS_H

#include "jtpdf/types.h"
#include "objects/views.h"
#include "output/object_writer.h"

inline constexpr int kNewObject = 0;

// Refuses a number that is not reserved, or was written already, with EINVAL.
void RequireReserved(const ObjectWriter& out, int object);

// Write an object under a number that is reserved or, for kNewObject, the next one, and return it.
// What a host must not write is refused with EINVAL before anything is written: a value that is not
// one object, an entry that EntryTree does not take, /Length.
int WriteObject(ObjectWriter& out, int object, const char* value);
int WriteStream(ObjectWriter& out, int object, ArrayView<JTPDFEntry> entries,
                ArrayView<JTPDFPiece> pieces);

#endif  // JTPDF_DOCUMENT_OPEN_OBJECTS_H
