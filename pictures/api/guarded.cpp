#include "api/guarded.h"

#include <cstring>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "image.h"
#include "measures.h"

namespace pictures::api {
namespace {

// The text as far as there is room, cut between characters.
void Store(std::string_view text, char* room, size_t size) noexcept {
  size_t length = text.size();
  if (length >= size) {
    length = size - 1;
    while (length > 0 && (text[length] & 0xC0) == 0x80) --length;
  }
  std::memcpy(room, text.data(), length);
  room[length] = '\0';
}

int32_t Tell(JTPDFPictureError* error, JTPDFPictureResult result, int32_t code,
             std::string_view message) noexcept {
  if (error != nullptr) {
    error->result = result;
    error->code = code;
    Store(message, error->message, sizeof error->message);
  }
  return result;
}

}  // namespace

void RefuseArgument(std::string message) {
  throw Failure{kJTPDFPictureArgument, 0, std::move(message)};
}

void Check(int32_t code) {
  if (code == 0) return;
  throw Failure{kJTPDFPictureDocument, code,
                code > 0
                    ? "the document could not be written: " + std::generic_category().message(code)
                    : "the document refused it: it is not open, is finished, or its output "
                      "has failed"};
}

void Clear(JTPDFPictureError* error) noexcept {
  Tell(error, kJTPDFPictureDone, 0, "");
}

int32_t Describe(JTPDFPictureError* error) noexcept {
  try {
    throw;
  } catch (const Failure& failure) {
    return Tell(error, failure.result, failure.code, failure.message);
  } catch (const ImageError& problem) {
    return Tell(error, kJTPDFPictureUnusable, 0, problem.what());
  } catch (const MeasureError& problem) {
    return Tell(error, kJTPDFPictureArgument, 0, problem.what());
  } catch (const std::bad_alloc&) {
    return Tell(error, kJTPDFPictureNoMemory, 0, "needs more memory than there is; scale it down");
  } catch (const std::exception& problem) {
    return Tell(error, kJTPDFPictureUnusable, 0, problem.what());
  } catch (...) {
    return Tell(error, kJTPDFPictureUnusable, 0, "cannot be read, for a reason without a name");
  }
}

}  // namespace pictures::api
