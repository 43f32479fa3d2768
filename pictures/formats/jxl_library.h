// jxl_library.h - the functions of libjxl that are used.
#ifndef JTPDF_PICTURES_JXL_LIBRARY_H
#define JTPDF_PICTURES_JXL_LIBRARY_H

#include <jxl/decode.h>

#include "late_library.h"

namespace pictures {

#ifdef JTPDF_JXL_LIBRARY
#define JTPDF_JXL_FUNCTION JTPDF_LATE_FUNCTION
#else
#define JTPDF_JXL_FUNCTION JTPDF_LINKED_FUNCTION
#endif

struct JxlLibrary {
#ifdef JTPDF_JXL_LIBRARY
  LateLibrary library{JTPDF_JXL_LIBRARY};
#endif
  JTPDF_JXL_FUNCTION(JxlDecoderCreate);
  JTPDF_JXL_FUNCTION(JxlDecoderDestroy);
  JTPDF_JXL_FUNCTION(JxlDecoderGetBasicInfo);
  JTPDF_JXL_FUNCTION(JxlDecoderGetBoxType);
  JTPDF_JXL_FUNCTION(JxlDecoderGetColorAsEncodedProfile);
  JTPDF_JXL_FUNCTION(JxlDecoderGetColorAsICCProfile);
  JTPDF_JXL_FUNCTION(JxlDecoderGetExtraChannelInfo);
  JTPDF_JXL_FUNCTION(JxlDecoderGetICCProfileSize);
  JTPDF_JXL_FUNCTION(JxlDecoderImageOutBufferSize);
  JTPDF_JXL_FUNCTION(JxlDecoderProcessInput);
  JTPDF_JXL_FUNCTION(JxlDecoderReleaseBoxBuffer);
  JTPDF_JXL_FUNCTION(JxlDecoderReleaseJPEGBuffer);
  JTPDF_JXL_FUNCTION(JxlDecoderSetBoxBuffer);
  JTPDF_JXL_FUNCTION(JxlDecoderSetDecompressBoxes);
  JTPDF_JXL_FUNCTION(JxlDecoderSetImageOutBuffer);
  JTPDF_JXL_FUNCTION(JxlDecoderSetInput);
  JTPDF_JXL_FUNCTION(JxlDecoderSetJPEGBuffer);
  JTPDF_JXL_FUNCTION(JxlDecoderSetKeepOrientation);
  JTPDF_JXL_FUNCTION(JxlDecoderSetUnpremultiplyAlpha);
  JTPDF_JXL_FUNCTION(JxlDecoderSubscribeEvents);
};

// Throws an ImageError where it cannot be loaded.
inline const JxlLibrary& Jxl() {
  static const JxlLibrary library;
  return library;
}

}  // namespace pictures

#endif  // JTPDF_PICTURES_JXL_LIBRARY_H
