// guarded.h - the one place where what is thrown becomes what the C interface gives.
#ifndef JTPDF_PICTURES_API_GUARDED_H
#define JTPDF_PICTURES_API_GUARDED_H

#include <cstdint>
#include <exception>
#include <string>

#include "jtpdf/pictures.h"

namespace pictures::api {

// A failure that is none of the picture's.
struct Failure {
  JTPDFPictureResult result;
  int32_t code;
  std::string message;
};

// What the caller asked for cannot be.
[[noreturn]] void RefuseArgument(std::string message);

// Throws where a handle or another pointer that has to be there is not.
inline void Require(const void* pointer, const char* name) {
  if (pointer == nullptr) RefuseArgument(std::string(name) + ": is null");
}

// Throws for a result code of the document's other than 0.
void Check(int32_t code);

// Describes the exception that is handled. Takes no memory where there may be none.
int32_t Describe(JTPDFPictureError* error) noexcept;

void Clear(JTPDFPictureError* error) noexcept;

// Does the work; 0, or the result for what it throws.
template <class Work>
int32_t Guarded(JTPDFPictureError* error, const Work& work) noexcept {
  Clear(error);
  try {
    work();
    return kJTPDFPictureDone;
  } catch (...) {
    return Describe(error);
  }
}

}  // namespace pictures::api

#endif  // JTPDF_PICTURES_API_GUARDED_H
