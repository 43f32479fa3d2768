// picture.h - a picture of the C interface: its bytes, and what the headers of its frames say.
#ifndef JTPDF_PICTURES_API_PICTURE_H
#define JTPDF_PICTURES_API_PICTURE_H

#include <vector>

#include "bytes.h"
#include "formats/decoder.h"
#include "image.h"
#include "jtpdf/pictures.h"

struct JTPDFPicture {
  pictures::Buffer owned;  // empty where the bytes are the caller's
  pictures::Bytes bytes;
  pictures::ReadLimits limits;
  std::vector<pictures::ImagePlan> frames;

  // The frame, if it is there; a caller's mistake where it is not.
  const pictures::ImagePlan& Frame(unsigned index) const;
  // The same, of one that can be used.
  const pictures::ImagePlan& UsableFrame(unsigned index) const;
};

#endif  // JTPDF_PICTURES_API_PICTURE_H
