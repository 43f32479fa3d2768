#include "pdf_date.h"

#include <gtest/gtest.h>

#include "usage_error.h"

namespace pictures::tool {
namespace {

TEST(ParseDate, BecomesAPdfDate) {
  EXPECT_EQ(ParseDate("2026"), L"D:2026");
  EXPECT_EQ(ParseDate("2026-05-17"), L"D:20260517");
  EXPECT_EQ(ParseDate("2026-05-17T12:30"), L"D:202605171230");
  EXPECT_EQ(ParseDate("2026-05-17 12:30:01Z"), L"D:20260517123001Z");
  EXPECT_EQ(ParseDate("2026-05-17T12:30:01+02:00"), L"D:20260517123001+02'00'");
  EXPECT_EQ(ParseDate("2026-05-17T12:30:01-0330"), L"D:20260517123001-03'30'");
  EXPECT_EQ(ParseDate("2026-05-17t12:30:01z"), L"D:20260517123001Z");
  EXPECT_EQ(ParseDate("2026-12-31T23:59:59-23:59"), L"D:20261231235959-23'59'");
  EXPECT_EQ(ParseDate("2026-01-01T00:00:00+00"), L"D:20260101000000+00'00'");
  EXPECT_EQ(ParseDate("2026-05"), L"D:202605");
  EXPECT_EQ(ParseDate("2024-02-29"), L"D:20240229");
  EXPECT_EQ(ParseDate("2000-02-29"), L"D:20000229");
}

TEST(ParseDate, RefusesDaysThatAreNone) {
  for (const char* text : {"",
                           "now",
                           "2026-13-01",
                           "2026-00-01",
                           "2025-02-29",
                           "1900-02-29",
                           "2100-02-29",
                           "2026-5-1",
                           "2026-05-17T24:00",
                           "2026-05-17T12:60",
                           "2026-05-17T12:30:60",
                           "2026-05-17T12:30:00+02:60",
                           "2026-05-17T12:30:00+24:00",
                           "2026-04-31",
                           "2026-05-00",
                           "2026-05-17T12:30:00+1",
                           "2026-05-17T12:30:00+02:0x",
                           "2026-05-17T",
                           "2026-05-17T12",
                           "20260517",
                           "2026-05-17T12:30:00ZZ",
                           "2026-05-17T12:30:00+25:00",
                           "2026-05-17Z",
                           "T"}) {
    EXPECT_THROW(ParseDate(text), UsageError) << text;
  }
}

}  // namespace
}  // namespace pictures::tool
