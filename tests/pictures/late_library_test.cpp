#include "late_library.h"

#include <gtest/gtest.h>

#include <string>

#include "image.h"

namespace pictures {
namespace {

constexpr char kMaths[] = "libm.so.6";

TEST(LateLibrary, FindsFunctions) {
  const LateLibrary library(kMaths);
  EXPECT_EQ(library.Find<double(double)>("floor")(2.5), 2);
}

TEST(LateLibrary, SaysWhatCannotBeLoaded) {
  const auto messageOf = [](auto load) -> std::string {
    try {
      load();
      return "";
    } catch (const ImageError& error) {
      return error.what();
    }
  };
  const std::string library = messageOf([] { LateLibrary("libnone.so.7"); });
  EXPECT_EQ(library.find("is of a kind that libnone.so.7 decodes, which cannot be loaded ("), 0u);
  EXPECT_NE(library.find("; install it"), std::string::npos);
  const std::string function = messageOf([] { LateLibrary(kMaths).Find<void()>("no_such"); });
  EXPECT_NE(function.find("no_such"), std::string::npos);
}

}  // namespace
}  // namespace pictures
