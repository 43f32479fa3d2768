#include "objects/syntax.h"

#include <gtest/gtest.h>

#include <string>

TEST(IsName, TakesOneNameOfRegularCharacters) {
  for (const char* name : {"/A", "/FlateDecode", "/a.b-c_d!$&'*+,:;=?@^`|~\"", "/A#20B", "/1"}) {
    EXPECT_TRUE(IsName(name)) << name;
  }
  for (const char* text : {"", "/", "A", "//A", "/A/B", "/A B", " /A", "/A ", "/A(b)", "/A<", "/A]",
                           "/A{", "/A%", "/A#", "/A#2", "/A#2g", "/A#00", "/\x80", "/A\t"}) {
    EXPECT_FALSE(IsName(text)) << text;
  }
}

TEST(IsNamePath, TakesNamesInARow) {
  for (const char* path : {"/A", "/A/B", "/DecodeParms/Predictor", "/A/A/A/A"}) {
    EXPECT_TRUE(IsNamePath(path)) << path;
  }
  for (const char* text : {"", "/", "A/B", "/A/", "/A//B", "//A", "/A /B", "/A/B\n"}) {
    EXPECT_FALSE(IsNamePath(text)) << text;
  }
}

TEST(IsOneObject, TakesEachKind) {
  for (const char* text : {"null",
                           "true",
                           "false",
                           "0",
                           "-1",
                           "+17",
                           "3.5",
                           "-.5",
                           "4.",
                           "123456789012345678",
                           "()",
                           "(a(b)c)",
                           "(\\()",
                           "(\\\\)",
                           "(a\r\nb)",
                           "<>",
                           "<0aF>",
                           "<0 1\n2>",
                           "/",
                           "/Name",
                           "/#41",
                           "[]",
                           "[1 2]",
                           "[ 1[2]3 /A/B(c)<00>]",
                           "<<>>",
                           "<< /A 1 >>",
                           "<</A<</B[/C]>>/D(e)>>",
                           "12 0 R",
                           "123456789 0 R",
                           "12\n0\tR",
                           "[1 0 R 2 0 R 3]",
                           "[1 0 2 0 R]",
                           "<</A 7 0 R/B 7>>",
                           "<</A 1/a 1/A#20 1/B<</A 1>>>>",
                           " 1 ",
                           "\n/A\n",
                           "[/A#20B]",
                           "<</Length 5>>"}) {
    EXPECT_TRUE(IsOneObject(text)) << text;
  }
}

TEST(IsOneObject, RefusesWhatIsNotOne) {
  for (const char* text : {"",
                           " ",
                           "1 2",
                           "1 0",
                           "0 0 R",
                           "1 1 R",
                           "1 0 R R",
                           "12 0 r",
                           "-1 0 R",
                           "1234567890 0 R",
                           "1 0 Rx",
                           "nul",
                           "nulll",
                           "True",
                           "1e5",
                           "--1",
                           "+-1",
                           "1-",
                           "1.2.3",
                           ".",
                           "+",
                           "-.",
                           "1234567890123456789",
                           "1.1234567890123456789",
                           "(",
                           ")",
                           "(a))",
                           "((a)",
                           "<",
                           ">",
                           "<0",
                           "<0g>",
                           "<<",
                           ">>",
                           "<< /A >>",
                           "<< /A 1",
                           "<< 1 2 >>",
                           "<< (a) 1 >>",
                           "<< / 1 >>",
                           "<< /A 1 /A 1 >>",
                           "<< /A 1 /#41 1 >>",
                           "<< /A 1 /B >>",
                           "<</A 1]",
                           "[",
                           "]",
                           "[1",
                           "[1>>",
                           "[1 0 R",
                           "{1}",
                           "% a\n1",
                           "1 % a",
                           "[1 % a\n]",
                           "endobj",
                           "1 endobj",
                           "[endobj]",
                           "stream",
                           "<<>> stream\nx\nendstream",
                           "R",
                           "[R]",
                           "[1 R]",
                           "[1 0 0 R]x",
                           "\v1",
                           "\x80",
                           "/\x80",
                           "[\x01]",
                           "/A#0",
                           "1\x7F"}) {
    EXPECT_FALSE(IsOneObject(text)) << text;
  }
}

TEST(IsDirectObject, IsNoReference) {
  for (const char* text : {"1", "[1 0 R]", "<</A 1 0 R>>", "(1 0 R)", " null "}) {
    EXPECT_TRUE(IsDirectObject(text)) << text;
  }
  for (const char* text : {"1 0 R", " 12 0 R ", "", "1 2", "1 0"}) {
    EXPECT_FALSE(IsDirectObject(text)) << text;
  }
}

TEST(IsOneObject, NestsAHundredDeepAndNoDeeper) {
  const auto nested = [](int depth, const char* open, const char* close) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += open;
    text += "1";
    for (int i = 0; i < depth; ++i) text += close;
    return text;
  };
  EXPECT_TRUE(IsOneObject(nested(99, "[", "]")));
  EXPECT_TRUE(IsOneObject(nested(99, "<</A ", ">>")));
  EXPECT_FALSE(IsOneObject(nested(100, "[", "]")));
  EXPECT_FALSE(IsOneObject(nested(100, "<</A ", ">>")));
  EXPECT_FALSE(IsOneObject(nested(1000000, "[", "")));
}
