#include "pdf_date.h"

#include <gtest/gtest.h>

#include "usage_error.h"

namespace tool {
namespace {

TEST(ParseDate, BecomesAPdfDate) {
  EXPECT_EQ(ParseDate("2026"), L"D:2026");
  EXPECT_EQ(ParseDate("2026-05-17"), L"D:20260517");
  EXPECT_EQ(ParseDate("2026-05-17T12:30"), L"D:202605171230");
  EXPECT_EQ(ParseDate("2026-05-17 12:30:01Z"), L"D:20260517123001Z");
  EXPECT_EQ(ParseDate("2026-05-17T12:30:01+02:00"), L"D:20260517123001+02'00'");
  EXPECT_EQ(ParseDate("2026-05-17T12:30:01-0330"), L"D:20260517123001-03'30'");
  EXPECT_EQ(ParseDate("2026-05-17t12:30:01z"), L"D:20260517123001Z");
  EXPECT_EQ(ParseDate("2024-02-29"), L"D:20240229");
  EXPECT_EQ(ParseDate("2000-02-29"), L"D:20000229");
}

TEST(ParseDate, RefusesDaysThatAreNone) {
  for (const char* text :
       {"", "now", "2026-13-01", "2026-00-01", "2025-02-29", "1900-02-29", "2100-02-29", "2026-5-1",
        "2026-05-17T24:00", "2026-05-17T12:30:00+25:00", "2026-05-17Z", "T"}) {
    EXPECT_THROW(ParseDate(text), UsageError) << text;
  }
}

}  // namespace
}  // namespace tool
