// Numbers and references against the C library's.

#include <cmath>
#include <cstdlib>

#include "generators.h"
#include "models.h"
#include "objects/value_format.h"

namespace {

RC_GTEST_PROP(NumberProperties, AnyDoubleIsPrintedAsTheCLibraryPrintsIt, ()) {
  const double value = *generators::AnyDouble();
  RC_ASSERT(Num(value) == model::Number(value));
}

RC_GTEST_PROP(NumberProperties, TiesAreRoundedAsTheCLibraryRoundsThem, ()) {
  const double value = *generators::NearTie();
  RC_ASSERT(Num(value) == model::Number(value));
}

RC_GTEST_PROP(NumberProperties, EveryPowerOfTwoRangeIsPrintedAsTheCLibraryPrintsIt, ()) {
  const int exponent = *rc::gen::inRange(-1074, 1024);
  const double fraction =
      1.0 + static_cast<double>(*rc::gen::inRange<std::int64_t>(0, std::int64_t{1} << 52)) /
                4503599627370496.0;
  const double value = std::ldexp(*rc::gen::arbitrary<bool>() ? fraction : -fraction, exponent);
  RC_ASSERT(Num(value) == model::Number(value));
}

// Nothing of the C library's formatting in this one: read back, the text is the nearest number of
// four decimals.
RC_GTEST_PROP(NumberProperties, ReadBackItIsWithinHalfAStepOfTheFourthDecimal, ()) {
  const double value = *generators::Length();
  const double read = std::strtod(Num(value).c_str(), nullptr);
  RC_ASSERT(std::fabs(read - value) <= 0.00005000001);
}

RC_GTEST_PROP(NumberProperties, IntegersArePaddedAsTheCLibraryPadsThem, ()) {
  const int small = *rc::gen::arbitrary<int>();
  const long long large = *rc::gen::map(
      rc::gen::pair(rc::gen::arbitrary<std::uint64_t>(), rc::gen::inRange(0, 64)),
      [](const std::pair<std::uint64_t, int>& p) {
        return static_cast<long long>(p.first >> p.second) * (p.second % 2 == 0 ? 1 : -1);
      });
  const unsigned width =
      *rc::gen::oneOf(rc::gen::inRange(0u, 130u), rc::gen::arbitrary<unsigned>());
  RC_ASSERT(IntToStr(small, width) == model::Integer(small, width));
  RC_ASSERT(IntToStr(large, width) == model::Integer(large, width));
}

RC_GTEST_PROP(NumberProperties, ReferencesNameTheirObjects, ()) {
  const int object = *rc::gen::arbitrary<int>();
  RC_ASSERT(AsRefString(object) == model::Reference(object));
  const int first = *rc::gen::inRange(0, 2000000);
  const int count = *rc::gen::inRange(-3, 40);
  RC_ASSERT(AsRefArray(first, count) == model::ReferenceArray(first, count));
}

}  // namespace
