// lab.h - CIELAB colours as sRGB shows them.
#ifndef JTPDF_PICTURES_LAB_H
#define JTPDF_PICTURES_LAB_H

#include <array>

namespace pictures {

// Red, green and blue from 0 to 1 of a colour of lightness 0 to 100. White stays white, whatever
// light it was measured in; what sRGB cannot show is clipped.
std::array<double, 3> LabToRgb(double lightness, double a, double b);

}  // namespace pictures

#endif  // JTPDF_PICTURES_LAB_H
