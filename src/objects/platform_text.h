// platform_text - what the library asks of the platform, on POSIX and on Windows.
//
// The one place that knows the platform: validity of wide text, its UTF-16BE bytes, file names as
// the file system wants them, files that are written, and error texts.
#ifndef JTPDF_OBJECTS_PLATFORM_TEXT_H
#define JTPDF_OBJECTS_PLATFORM_TEXT_H

#include <cstddef>
#include <fstream>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

// Valid UTF-32 text: no surrogate and no value above U+10FFFF in it. It borrows the caller's where
// wide text is UTF-32, and is made of it on Windows, where that is UTF-16.
#if defined(_WIN32)
using PlatformString = std::u32string;
#else
using PlatformString = std::wstring_view;
#endif
using PlatformStringView = std::basic_string_view<PlatformString::value_type>;

// The text up to its NUL as a platform string; none if it is not valid UTF-32, or UTF-16.
std::optional<PlatformString> NSString_from_wchar_t(const wchar_t* text);

// How many code points there are in all of text, which may hold NULs.
std::size_t CodePointCount(std::wstring_view text);

// Writes the UTF-16BE bytes of as many whole leading characters of text as fit into room bytes at
// out, and returns how many bytes that is. Conversion ends for good at the first character that
// does not fit.
std::size_t WriteUTF16BE(PlatformStringView text, unsigned char* out, std::size_t room);

// Open stream on path (UTF-8 on disk, UTF-16 on Windows) with mode, an std::ios_base::openmode
// value, to which the output form adds std::ios_base::out and the input form std::ios_base::in. A
// failure shows as the stream's failure bit, with the system's errno; a path that is not valid text
// is never tried and gives EILSEQ.
void OpenWithUnicodePath(std::ofstream& stream, const wchar_t* path, unsigned int mode);
void OpenWithUnicodePath(std::ifstream& stream, const wchar_t* path, unsigned int mode);

// A file that is written from its beginning to its end. The calls return false and leave the
// system's error in errno where they fail.
class PlatformFile {
 public:
  PlatformFile() = default;
  PlatformFile(const PlatformFile&) = delete;
  PlatformFile& operator=(const PlatformFile&) = delete;
  ~PlatformFile() { Close(); }

  // Creates or truncates the file at path, as OpenWithUnicodePath does. Its descriptor is never one
  // of the standard streams', even where those are closed: what the host's process prints must not
  // get into the file.
  bool Open(const wchar_t* path);
  bool IsOpen() const { return descriptor >= 0; }
  // Writes all bytes of the parts, one behind the other.
  bool Write(std::initializer_list<std::string_view> parts);
  // Closes the file whatever it returns.
  bool Close();

 private:
  int descriptor = -1;
};

// strerror_r of POSIX: puts the text of error errnum into buffer (of size bytes, at least 1) and
// returns 0, or an error number if errnum is unknown or the text was cut. The buffer always holds
// a terminated text.
int JTPDFStrError(int errnum, char* buffer, unsigned long size);

#endif  // JTPDF_OBJECTS_PLATFORM_TEXT_H
