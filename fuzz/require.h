// require - a property that holds for every input; where it does not, the process aborts and the
// fuzzer keeps the input.
#ifndef JTPDF_FUZZ_REQUIRE_H
#define JTPDF_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>
#include <string>

inline void Require(bool holds, const char* property, const std::string& detail = {}) {
  if (holds) return;
  std::fprintf(stderr, "not so: %s %s\n", property, detail.c_str());
  std::abort();
}

// The two texts are equal; what is printed shows where they part.
inline void RequireEqual(const std::string& actual, const std::string& expected,
                         const char* property) {
  if (actual == expected) return;
  std::size_t at = 0;
  while (at < actual.size() && at < expected.size() && actual[at] == expected[at]) ++at;
  std::fprintf(stderr, "at byte %zu of %zu and %zu\n--- actual\n%s\n--- expected\n%s\n", at,
               actual.size(), expected.size(), actual.c_str(), expected.c_str());
  Require(false, property);
}

#endif  // JTPDF_FUZZ_REQUIRE_H
