#include <gtest/gtest.h>

#include "jtpdf/version.h"

#include <cmath>

#include "jtpdf/jtpdf.h"

TEST(UnitConstants, AreTheLiterals) {
  EXPECT_EQ(72.0, PDFCoordinateUnitInch);
  EXPECT_EQ(28.346456692944, PDFCoordinateUnitCentimeter);
  EXPECT_EQ(2.8346456692944, PDFCoordinateUnitMillimeter);
  EXPECT_EQ(1.0, PDFCoordinateUnitPoint);
}

TEST(UnitConstants, MetricOnesAreNotComputed) {
  EXPECT_NE(72 / 2.54, PDFCoordinateUnitCentimeter);
  EXPECT_NE(72 / 25.4, PDFCoordinateUnitMillimeter);
  EXPECT_NEAR(72 / 2.54, PDFCoordinateUnitCentimeter, 1e-10);
}

TEST(JTPDFGetVersion, IsThatOfTheHeaders) {
  EXPECT_STREQ(JTPDF_VERSION_STRING, JTPDFGetVersion());
}
