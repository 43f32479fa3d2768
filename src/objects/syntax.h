// syntax - whether a host's text is what it has to be: a path of names, or one object of PDF.
//
// Text that passes here is written as it stands, so whatever it holds must not end the object that
// it goes into, or leave it open.
#ifndef JTPDF_OBJECTS_SYNTAX_H
#define JTPDF_OBJECTS_SYNTAX_H

#include <string_view>

// One name, "/FlateDecode": a solidus and at least one regular character (ISO 32000-1, 7.3.5),
// others spelled as "#20". Characters are those from 0x21 to 0x7E.
bool IsName(std::string_view text);

// One name or several, "/DecodeParms/Predictor".
bool IsNamePath(std::string_view text);

// Exactly one object of ISO 32000-1, 7.3 that is not a stream: null, a boolean, a number, a string,
// a name, an array, a dictionary, or a reference "12 0 R" to an object of ours. White space may
// stand around it; comments and keys that occur twice are not taken, nor more than 100 arrays and
// dictionaries in each other, nor numbers of more than 18 digits before or behind the point.
bool IsOneObject(std::string_view text);

// The same without references: what may stand between "7 0 obj" and "endobj". Readers refuse a
// lone reference there.
bool IsDirectObject(std::string_view text);

#endif  // JTPDF_OBJECTS_SYNTAX_H
