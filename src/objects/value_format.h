// value_format - numbers and references as they stand in the file: "28.3465", "0000000017",
// "12 0 R", "[5 0 R 6 0 R]".
//
// Every number of the output is made here, by integer arithmetic, so that no locale can put a comma
// into a file.
#ifndef JTPDF_OBJECTS_VALUE_FORMAT_H
#define JTPDF_OBJECTS_VALUE_FORMAT_H

#include <cstddef>
#include <string>

// The longest text that Num gives; a longer number is cut off.
inline constexpr std::size_t kNumMaxLength = 29;

// The longest text that IntToStr gives.
inline constexpr std::size_t kIntMaxLength = 100;

// The text of printf's "%.4f" in the "C" locale under round-to-nearest, cut to 29 characters:
// "1.0000", "-0.0000", "inf", "-nan".
std::string Num(double value);

// Writes the text of Num(value), up to kNumMaxLength characters without a NUL, and returns its end.
char* WriteNum(char* out, double value);

// The text of printf's "%0*d": zero-padded on the left to width, the sign in front of the zeros. A
// width above 100 counts as 100; width 0 gives the plain number.
std::string IntToStr(int value, unsigned int width);
std::string IntToStr(long long value, unsigned int width);

// Writes the text of IntToStr, up to kIntMaxLength characters without a NUL, and returns its end.
char* WriteInt(char* out, long long value, unsigned int width);

// A reference to the object: "12 0 R". Generation numbers are always 0.
std::string AsRefString(int objectNumber);

// An array of references to count consecutive objects: "[5 0 R 6 0 R]". For a count of 0 or less it
// is the single byte "]".
std::string AsRefArray(int firstObject, int count);

#endif  // JTPDF_OBJECTS_VALUE_FORMAT_H
