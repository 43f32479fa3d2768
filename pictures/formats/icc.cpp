#include "formats/icc.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace pictures {
namespace {

std::string Signature(Bytes profile, size_t offset) {
  return {reinterpret_cast<const char*>(profile.data() + offset), 4};
}

}  // namespace

std::string ProfileFacts::Describe() const {
  if (space == "GRAY") return "grey";
  std::string text;
  for (const char c : space) {
    if (c > ' ' && c < 0x7F) text += c;
  }
  return text;
}

ProfileFacts ReadProfile(Bytes profile) {
  constexpr size_t kHeader = 128;
  ProfileFacts facts;
  if (profile.size() < kHeader + 4 || Signature(profile, 36) != "acsp" ||
      Be32(profile.data()) > profile.size()) {
    return facts;
  }
  facts.space = Signature(profile, 16);
  // ISO 32000-1, 8.6.5.5: input, display, output and colour-space profiles describe pictures.
  constexpr std::array<std::string_view, 4> kClasses{"scnr", "mntr", "prtr", "spac"};
  facts.valid =
      std::find(kClasses.begin(), kClasses.end(), Signature(profile, 12)) != kClasses.end();
  return facts;
}

}  // namespace pictures
