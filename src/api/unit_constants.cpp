// Points per unit. The metric factors are these literals and not 72/2.54 and 72/25.4, from which
// they differ in the thirteenth digit: files made with them must agree to the byte.

#include "jtpdf/jtpdf.h"

extern "C" {

const double PDFCoordinateUnitInch = 72.0;
const double PDFCoordinateUnitCentimeter = 28.346456692944;
const double PDFCoordinateUnitMillimeter = 2.8346456692944;
const double PDFCoordinateUnitPoint = 1.0;

}  // extern "C"
