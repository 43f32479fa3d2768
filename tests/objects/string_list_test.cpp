#include "objects/string_list.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/failing_new.h"
#include "support/failing_realloc.h"

TEST(JTPDFStringListAdd, PartsAreJoinedWithOneBlank) {
  JTPDFStringList list;
  list.Add("1", "0", "0", "1", "100", "200", "cm");
  EXPECT_EQ("1 0 0 1 100 200 cm", list.Text());
}

TEST(JTPDFStringListAdd, NoBlankInsideBrackets) {
  JTPDFStringList list;
  list.Add("[", "3", "2", "]", "0", "d");
  EXPECT_EQ("[3 2] 0 d", list.Text());
}

TEST(JTPDFStringListAdd, OnlyALoneClosingBracketGoesWithoutBlank) {
  JTPDFStringList list;
  list.Add("a", "]b");
  list.Add("a", "]");
  list.Add("a[", "b");
  list.Add("[a", "b");
  EXPECT_EQ("a ]b\r\na]\r\na[b\r\n[a b", list.Text());
}

TEST(JTPDFStringListAdd, AnEmptyPartStillCausesTheBlank) {
  JTPDFStringList list;
  list.Add("a", "", "b");
  EXPECT_EQ("a  b", list.Text());
}

TEST(JTPDFStringListAdd, AnEmptyPartInFrontCausesNone) {
  JTPDFStringList list;
  list.Add("", "a", "");
  EXPECT_EQ("a ", list.Text());
}

TEST(JTPDFStringListAdd, BlanksOfThePartsAreKept) {
  JTPDFStringList list;
  list.Add("q 1 0 0 1 ", "5", " cm");
  EXPECT_EQ("q 1 0 0 1  5  cm", list.Text());
}

TEST(JTPDFStringListAdd, CountZeroAppendsNothing) {
  JTPDFStringList list;
  list.Add(0u);
  EXPECT_EQ("", list.Text());
  list.Add("q");
  list.Add(0u);
  list.Add("Q");
  EXPECT_EQ("q\r\nQ", list.Text());
}

TEST(JTPDFStringListAdd, ALoneClosingBracketIsALine) {
  JTPDFStringList list;
  list.Add("]");
  EXPECT_EQ("]", list.Text());
}

TEST(JTPDFStringListAdd, EmptyPartsMakeAnEmptyLine) {
  JTPDFStringList list;
  list.Add("a");
  list.Add("", "", "");
  list.Add("b");
  EXPECT_EQ("a\r\n\r\nb", list.Text());
  JTPDFStringList empty;
  empty.Add("");
  empty.Add("");
  EXPECT_EQ("\r\n", empty.Text());
}

TEST(JTPDFStringListAdd, CountedTextsAreJoinedTheSameWay) {
  JTPDFStringList list;
  list.Add(6u, "[", "3", "2", "]", "0", "d");
  list.Add(3u, "a", "", "b");
  list.Add(12u, "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12");
  EXPECT_EQ("[3 2] 0 d\r\na  b\r\n1 2 3 4 5 6 7 8 9 10 11 12", list.Text());
}

TEST(JTPDFStringListAdd, TakesOneToTenStrings) {
  const std::string s = "x";
  JTPDFStringList list;
  list.Add(s);
  list.Add(s, s);
  list.Add(s, s, s);
  list.Add(s, s, s, s);
  list.Add(s, s, s, s, s);
  list.Add(s, s, s, s, s, s);
  list.Add(s, s, s, s, s, s, s);
  list.Add(s, s, s, s, s, s, s, s);
  list.Add(s, s, s, s, s, s, s, s, s);
  list.Add(s, s, s, s, s, s, s, s, s, s);
  std::string expected;
  std::string line;
  for (int i = 0; i < 10; ++i) {
    line += i == 0 ? "x" : " x";
    expected += (i == 0 ? "" : "\r\n") + line;
  }
  EXPECT_EQ(expected, list.Text());
}

TEST(JTPDFStringListAdd, LeavesTheListUnchangedWhenThereIsNoMemory) {
  if (!kReallocFails) GTEST_SKIP() << "realloc cannot be made to fail in this build";
  const std::string text(1000, 'x');  // more than the list has room for
  auto addCounted = [&](JTPDFStringList& list) { list.Add(2u, text.c_str(), text.c_str()); };
  auto addTexts = [&](JTPDFStringList& list) { list.Add(text, text); };
  for (const std::function<void(JTPDFStringList&)>& add :
       {std::function<void(JTPDFStringList&)>(addCounted),
        std::function<void(JTPDFStringList&)>(addTexts)}) {
    long n = 0;
    for (;; ++n) {
      JTPDFStringList list;
      list.Add("q");
      const Outcome outcome = WithAllocations(n, [&] {
        add(list);
        return true;
      });
      if (outcome == Outcome::kSuccess) break;
      EXPECT_EQ("q", list.Text()) << "allocation " << n;
    }
    EXPECT_GT(n, 0);
  }
}

TEST(JTPDFStringListText, NoLinesGiveNoText) {
  EXPECT_EQ("", JTPDFStringList().Text());
}

TEST(JTPDFStringListText, LineEndsStandBetweenLinesOnly) {
  JTPDFStringList list;
  list.Add("q");
  EXPECT_EQ("q", list.Text());
  list.Add("Q");
  EXPECT_EQ("q\r\nQ", list.Text());
}

TEST(JTPDFStringListClear, RemovesAllLines) {
  JTPDFStringList list;
  list.Add("q");
  list.Clear();
  EXPECT_EQ("", list.Text());
}
