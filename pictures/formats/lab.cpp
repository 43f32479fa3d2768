#include "formats/lab.h"

#include <algorithm>
#include <cmath>

namespace pictures {
namespace {

// The inverse of CIELAB's f.
double Power(double t) {
  constexpr double kKnee = 6.0 / 29;
  return t > kKnee ? t * t * t : 3 * kKnee * kKnee * (t - 4.0 / 29);
}

// IEC 61966-2-1.
double Gamma(double linear) {
  const double v = std::clamp(linear, 0.0, 1.0);
  return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

}  // namespace

std::array<double, 3> LabToRgb(double lightness, double a, double b) {
  const double middle = (lightness + 16) / 116;
  // In the light of D50, as ICC and TIFF have it.
  const double x = 0.96422 * Power(middle + a / 500);
  const double y = Power(middle);
  const double z = 0.82521 * Power(middle - b / 200);
  // sRGB's primaries adapted to D50 by Bradford's method.
  return {Gamma(3.1338561 * x - 1.6168667 * y - 0.4906146 * z),
          Gamma(-0.9787684 * x + 1.9161415 * y + 0.0334540 * z),
          Gamma(0.0719453 * x - 0.2289914 * y + 1.4052427 * z)};
}

}  // namespace pictures
