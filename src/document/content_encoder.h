// content_encoder - the host's encoder for content streams.
#ifndef JTPDF_DOCUMENT_CONTENT_ENCODER_H
#define JTPDF_DOCUMENT_CONTENT_ENCODER_H

#include <string>
#include <string_view>

#include "jtpdf/types.h"

class ContentEncoder {
 public:
  // A null encode leaves contents as they are. filter has to be a name; else EINVAL.
  void Set(const char* filter, JTPDFEncodeFunction encode, void* context);

  struct Content {
    std::string_view data;
    std::string_view filter;  // empty: none
  };
  // The content as it is to be written: encoded where that makes it smaller. What it refers to is
  // the encoder's until the next call. A code of the encoder's is a failure with that errno.
  Content Encode(std::string_view plain) const;

 private:
  std::string filter;
  JTPDFEncodeFunction encode = nullptr;
  void* context = nullptr;
};

#endif  // JTPDF_DOCUMENT_CONTENT_ENCODER_H
