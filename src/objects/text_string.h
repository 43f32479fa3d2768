// text_string - wide text as PDF text strings: "(" FE FF "\000A\000\(" ")" (ISO 32000-1, 7.9.2.2).
#ifndef JTPDF_OBJECTS_TEXT_STRING_H
#define JTPDF_OBJECTS_TEXT_STRING_H

#include <string>

// The bytes FE FF and text in UTF-16 big-endian, whatever the byte order of the machine: read the
// units as bytes. Text counts up to its first NUL.
//
// The room behind the mark is two bytes per code point of text, so a text with characters above
// U+FFFF loses its end (kept: the lengths of our strings have always been bounded so). Where
// nothing is converted (no text, text that is not valid, a lone character that does not fit)
// the result is empty and diagnostic mode notes it.
std::u16string PDFUTF16FromWString(const std::wstring& text);

// The PDF string literal of text; "()" where PDFUTF16FromWString gives nothing.
std::string PsString(const std::wstring& text);

// The text as a string; null counts as empty.
std::wstring TextOrEmpty(const wchar_t* text);

// For debugging: "0x00000041, 0x00000042", "" for no units, "(NULL)" for null.
std::string DebugRepOfWideStr(const wchar_t* text);

// For debugging: the text between two double quotes, "(NULL)" for null.
std::string DebugRepOfCharStr(const char* text);

#endif  // JTPDF_OBJECTS_TEXT_STRING_H
