#include "late_library.h"

#include <dlfcn.h>

#include <string>

#include "image.h"

namespace pictures {
namespace {

[[noreturn]] void ThrowMissing(const char* name) {
  const char* reason = dlerror();
  throw ImageError(std::string("is of a kind that ") + name + " decodes, which cannot be loaded (" +
                   (reason == nullptr ? "no reason given" : reason) + "); install it");
}

}  // namespace

LateLibrary::LateLibrary(const char* name)
    : name_(name), handle_(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) ThrowMissing(name_);
}

void* LateLibrary::Address(const char* function) const {
  void* const address = dlsym(handle_, function);
  if (address == nullptr) ThrowMissing(name_);
  return address;
}

}  // namespace pictures
