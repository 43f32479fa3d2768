// jpeg_failure.h - what libjpeg-turbo reports: errors by a jump, warnings by a text, and no end of
// scans.
#ifndef JTPDF_PICTURES_JPEG_FAILURE_H
#define JTPDF_PICTURES_JPEG_FAILURE_H

#include <cstdio>  // jpeglib.h needs it

#include <jpeglib.h>

#include <csetjmp>

namespace pictures {

// libjpeg-turbo reports errors by a call that must not return: it jumps to `back`. Whoever calls
// setjmp there holds nothing with a destructor, for the jump passes through it.
struct JpegFailure {
  jpeg_error_mgr manager;  // first, so that libjpeg's pointer to it is a pointer to this
  std::jmp_buf back;
  char text[JMSG_LENGTH_MAX];
};

jpeg_error_mgr* JumpOnErrors(JpegFailure* failure);

// Jumps with a text of our own.
[[noreturn]] void FailWith(JpegFailure* failure, const char* text);

// A progressive file may repeat its scans without end: a small file that takes hours.
jpeg_progress_mgr LimitedScans();

}  // namespace pictures

#endif  // JTPDF_PICTURES_JPEG_FAILURE_H
