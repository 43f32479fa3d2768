#include "objects/dict.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

#include "support/bytes.h"
#include "support/cases.h"

using namespace std::string_literals;

struct RenderCase {
  const char* name;
  std::vector<std::pair<std::string, std::string>> entries;
  std::string text;
};

class JTPDFDictRender : public testing::TestWithParam<RenderCase> {};

TEST_P(JTPDFDictRender, IsExact) {
  JTPDFDict dict;
  for (const auto& [key, value] : GetParam().entries) dict[key] = value;
  EXPECT_BYTES(GetParam().text, dict.AsString());
}

INSTANTIATE_TEST_SUITE_P(
    JTPDFDictAsString, JTPDFDictRender,
    testing::Values(
        RenderCase{"NothingIsEmpty", {}, ""},
        RenderCase{"LengthAndStreamAreNotRendered", {{"/Length", "1"}, {"/Stream", "2"}}, ""},
        RenderCase{"EmptyKeyIsNotRendered", {{"", "1"}, {"/A", "2"}}, "/A 2"},
        RenderCase{"LengthInsideANestedDictionaryIsRendered",
                   {{"/A/Length", "1"}, {"/Lengths", "2"}},
                   Joined("/A", "<<", "/Length 1", ">>", "/Lengths 2")},
        RenderCase{"PageExample",
                   {{"/Type", "/Page"},
                    {"/Resources/ProcSet", "[/PDF /ImageC]"},
                    {"/Resources/XObject/Im1", "7 0 R"},
                    {"/Length", "120"}},
                   Joined("/Resources", "<<", "/ProcSet [/PDF /ImageC]", "/XObject", "<<",
                          "/Im1 7 0 R", ">>", ">>", "/Type /Page")},
        RenderCase{
            "NestedThenFlat", {{"/A/B", "1"}, {"/C", "2"}}, "/A\r\n<<\r\n/B 1\r\n>>\r\n/C 2"},
        RenderCase{"SharedParentOpensOnce",
                   {{"/R/A", "1"}, {"/R/B", "2"}},
                   "/R\r\n<<\r\n/A 1\r\n/B 2\r\n>>"},
        RenderCase{"DeeperSwitchClosesOnlyWhatDiffers",
                   {{"/A/B/x", "1"}, {"/A/C/y", "2"}},
                   "/A\r\n<<\r\n/B\r\n<<\r\n/x 1\r\n>>\r\n/C\r\n<<\r\n/y 2\r\n>>\r\n>>"},
        RenderCase{"DivergenceIsNotRemembered",
                   {{"/A/k", "1"}, {"/B/A/x", "2"}},
                   "/A\r\n<<\r\n/k 1\r\n/B\r\n<<\r\n/x 2\r\n>>\r\n>>"},
        RenderCase{"KeyWithoutSolidusStaysOpen", {{"Abc", "v"}}, "/Abc\r\n<<\r\nAbc v"},
        RenderCase{"GroupWithoutSolidusInFrontComesLast",
                   {{"Group/CS", "/DeviceRGB /I false"}, {"/Type", "/Page"}},
                   Joined("/Type /Page", "/Group", "<<", "/CS /DeviceRGB /I false", ">>")},
        RenderCase{"PathWithoutSolidusInFrontClosesAllItOpened",
                   {{"A/B/C", "1"}},
                   Joined("/A", "<<", "/B", "<<", "/C 1", ">>", ">>")},
        RenderCase{"BytewiseOrder",
                   {{"/a", "1"}, {"/Width", "2"}, {"/ColorSpace", "3"}, {"/BitsPerComponent", "4"}},
                   Joined("/BitsPerComponent 4", "/ColorSpace 3", "/Width 2", "/a 1")},
        RenderCase{"PrefixSortsFirst", {{"/AB", "2"}, {"/A", "1"}}, "/A 1\r\n/AB 2"},
        RenderCase{"BytesSortAsUnsigned", {{"/\xC0", "2"}, {"/z", "1"}}, "/z 1\r\n/\xC0 2"},
        RenderCase{"UnrenderedKeyMovesTheOpenPathOn",
                   {{"/A/B", "1"}, {"/Length", "9"}, {"/M", "2"}},
                   Joined("/A", "<<", "/B 1", "/M 2")},
        RenderCase{"StreamMovesTheOpenPathOn",
                   {{"/R/A", "1"}, {"/Stream", "9"}},
                   Joined("/R", "<<", "/A 1")},
        RenderCase{"TrailingWhiteSpaceGoesFromTheLastEntryOnly",
                   {{"/A", "x \t"}, {"/B", "y \t"}},
                   "/A x \t\r\n/B y"},
        RenderCase{"TrailingNulStays", {{"/A", "x\0 "s}}, "/A x\0"s},
        RenderCase{"EmptyValueKeepsItsBlank", {{"/A", ""}, {"/B", "1"}}, "/A \r\n/B 1"},
        RenderCase{"OpeningsStandBehindTheLastLineEndOfTheValue",
                   {{"/A/B/C", "1\r\n2"}},
                   Joined("/C 1", "/A", "<<", "/B", "<<", "2", ">>", ">>")},
        RenderCase{"SameDictionaryNamedAtTwoDepths",
                   {{"/A/A/x", "1"}, {"/A/y", "2"}},
                   Joined("/A", "<<", "/A", "<<", "/x 1", ">>", "/y 2", ">>")}),
    NameOf<RenderCase>);

TEST(JTPDFDictAsString, LeavesTheEntriesAsTheyAre) {
  JTPDFDict dict;
  dict["/A/B"] = "1";
  const std::string once = dict.AsString();
  EXPECT_EQ(once, dict.AsString());
  EXPECT_EQ(1u, dict.size());
}

TEST(JTPDFDictValidKey, KeepsVisibleAsciiOnlyAndPutsTheSolidusInFront) {
  EXPECT_EQ("/MyKey", JTPDFDict::ValidKey(" /My Key\t"));
  EXPECT_EQ("/JT_DUMMY_KEY", JTPDFDict::ValidKey(""));
  EXPECT_EQ("/JT_DUMMY_KEY", JTPDFDict::ValidKey("\x80\xFF"));
  EXPECT_EQ("/JT_DUMMY_KEY", JTPDFDict::ValidKey(" \t\r\n\x7F"));
  EXPECT_EQ("/Type", JTPDFDict::ValidKey("Type"));
  EXPECT_EQ("/A/B", JTPDFDict::ValidKey("/A/B"));
  EXPECT_EQ("/", JTPDFDict::ValidKey("/"));
  EXPECT_EQ("/!~", JTPDFDict::ValidKey("!~"));
  EXPECT_EQ("/#20[](%)/x", JTPDFDict::ValidKey("#20[](%)/x"));
  EXPECT_EQ("/AB", JTPDFDict::ValidKey("A\0B"s));
}

TEST(JTPDFDictValidKey, DropsEveryByteOutside0x21To0x7E) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  std::string kept = "/";
  for (char byte = 0x21; byte <= 0x7E; ++byte) kept += byte;
  EXPECT_EQ(kept, JTPDFDict::ValidKey(all));
}

TEST(JTPDFDictTable, ValueBecomesAStringLiteral) {
  const JTPDFDictionaryItem rows[] = {{"Width", L"100"}};
  const JTPDFDict dict(1, rows);
  ASSERT_EQ(1u, dict.size());
  EXPECT_BYTES("(\xFE\xFF\\0001\\0000\\0000)"s, dict.at("/Width"));
}

TEST(JTPDFDictTable, NullValueCountsAsEmpty) {
  const JTPDFDictionaryItem rows[] = {{"A", nullptr}, {"B", L""}};
  const JTPDFDict dict(2, rows);
  EXPECT_EQ(dict.at("/A"), dict.at("/B"));
  EXPECT_EQ("()", dict.at("/A"));
}

TEST(JTPDFDictTable, LaterRowOfTheSameKeyWins) {
  const JTPDFDictionaryItem rows[] = {{"/Type", L"1"}, {" Type", L"2"}};
  const JTPDFDict dict(2, rows);
  ASSERT_EQ(1u, dict.size());
  EXPECT_EQ(AsciiLiteral("2"), dict.at("/Type"));
}

TEST(JTPDFDictTable, CountZeroReadsNoRows) {
  EXPECT_TRUE(JTPDFDict(0, nullptr).empty());
}

TEST(JTPDFDictTable, EqualsEntriesStoredByHand) {
  const JTPDFDictionaryItem rows[] = {{"B/C", L"1"}, {"\x80", L"2"}};
  JTPDFDict byHand;
  byHand["/B/C"] = AsciiLiteral("1");
  byHand["/JT_DUMMY_KEY"] = AsciiLiteral("2");
  EXPECT_EQ(byHand, JTPDFDict(2, rows));
}

TEST(JTPDFDictValue, IsCopiedEntryByEntry) {
  JTPDFDict dict;
  dict["/A"] = "1";
  JTPDFDict copy(dict);
  copy["/B"] = "2";
  EXPECT_EQ(1u, dict.size());
  EXPECT_EQ("/A 1\r\n/B 2", copy.AsString());
  dict = copy;
  EXPECT_EQ("/A 1\r\n/B 2", dict.AsString());
}

// A vector that grows moves its elements only if that cannot fail.
TEST(JTPDFDictValue, MovesWithoutCopyingWhenAVectorGrows) {
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<JTPDFDict>);
  EXPECT_TRUE(std::has_virtual_destructor_v<JTPDFDict>);
  std::vector<JTPDFDict> pages(1);
  pages[0]["/A"] = "1";
  const std::string* const value = &pages[0]["/A"];
  pages.reserve(pages.capacity() + 1);
  EXPECT_EQ(value, &pages[0]["/A"]) << "the entry was copied";
}

TEST(CopyPart, IsTheFirstComponentWithItsSolidus) {
  EXPECT_EQ("/A", CopyPart("/A/B/C"));
  EXPECT_EQ("/A", CopyPart("A/B"));
  EXPECT_EQ("/A", CopyPart("/A"));
  EXPECT_EQ("", CopyPart(""));
  EXPECT_EQ("", CopyPart("/"));
  EXPECT_EQ("", CopyPart("//A"));
}

struct MoveCase {
  const char* name;
  const char* path;
  const char* part;
  const char* rest;
};

class MovePartOf : public testing::TestWithParam<MoveCase> {};

TEST_P(MovePartOf, RemovesAsManyBytesAsThePartHas) {
  const std::string text = GetParam().path;
  std::string_view path = text;
  EXPECT_EQ(GetParam().part, MovePart(path));
  EXPECT_EQ(GetParam().rest, path);
}

INSTANTIATE_TEST_SUITE_P(MovePart, MovePartOf,
                         testing::Values(MoveCase{"WithSolidus", "/A/B", "/A", "/B"},
                                         MoveCase{"WithoutSolidusTakesTheNext", "A/B", "/A", "B"},
                                         MoveCase{"ShorterThanItsPart", "Group", "/Group", ""},
                                         MoveCase{"OnlyOne", "/A", "/A", ""},
                                         MoveCase{"Empty", "", "", ""},
                                         MoveCase{"NoName", "//A", "", "//A"}),
                         NameOf<MoveCase>);

TEST(TrimDictionary, RemovesBytes0x01To0x20FromBothEnds) {
  std::string trimmed;
  for (char byte = 0x01; byte <= 0x20; ++byte) trimmed += byte;
  EXPECT_EQ("a b", TrimDictionary(trimmed + "a b" + trimmed));
  EXPECT_EQ("", TrimDictionary(trimmed));
  EXPECT_EQ("", TrimDictionary(""));
  EXPECT_EQ("\0a\0"s, TrimDictionary(" \0a\0 "s)) << "NUL is not white space here";
  EXPECT_EQ("\x7F\x80", TrimDictionary("\x7F\x80"));
}

struct ItemCase {
  const char* name;
  const char* key;
  const char* value;
  const char* previous;
  std::string text;
};

class ItemsAsStringOf : public testing::TestWithParam<ItemCase> {};

TEST_P(ItemsAsStringOf, OpensAndClosesAroundTheEntry) {
  EXPECT_BYTES(GetParam().text,
               ItemsAsString(GetParam().key, GetParam().value, GetParam().previous));
}

INSTANTIATE_TEST_SUITE_P(
    ItemsAsString, ItemsAsStringOf,
    testing::Values(
        ItemCase{"PlainEntry", "/Type", "/Page", "", "/Type /Page"},
        ItemCase{"LastEntryClosesAll", "", "", "/A/B", ">>\r\n>>\r\n "},
        ItemCase{"NothingOpen", "", "", "", " "},
        ItemCase{"OpensOutermostFirst", "/A/B/C", "1", "", "/A\r\n<<\r\n/B\r\n<<\r\n/C 1"},
        ItemCase{"SameParent", "/A/C", "1", "/A", "/C 1"},
        ItemCase{"ClosesBeforeItOpens", "/B/C", "1", "/A", ">>\r\n/B\r\n<<\r\n/C 1"},
        ItemCase{"ConsumesTheSameComponentAfterAMismatch", "/B/A/x", "2", "/A", "/B\r\n<<\r\n/x 2"},
        ItemCase{"ParentLongerThanTheOneBefore", "/A/B/C", "1", "/A", "/B\r\n<<\r\n/C 1"},
        ItemCase{"ParentShorterThanTheOneBefore", "/A/C", "1", "/A/B", ">>\r\n/C 1"},
        ItemCase{"DoubleSolidusEndsTheParent", "//A/B", "1", "", "/B 1"},
        ItemCase{"KeyEndsInSolidus", "/A/", "1", "", "/A\r\n<<\r\n/ 1"}),
    NameOf<ItemCase>);

// ---- Openings and line ends ----

TEST(ItemsAsString, PutsOpeningsBehindTheLastLineEndOfTheValue) {
  EXPECT_BYTES("/k a\r\n/A\r\n<<\r\n/B\r\n<<\r\nb"s, ItemsAsString("/A/B/k", "a\r\nb", ""));
}

TEST(ItemsAsString, PutsOpeningsBehindTheLastLineEndOfTheName) {
  EXPECT_BYTES("/k\r/A\r\n<<\r\n v"s, ItemsAsString("/A/k\r", "v", ""));
}

// Many short names take the most room for their bytes; an assertion watches it.
TEST(JTPDFDictAsString, DeepKeysHaveRoom) {
  for (const std::string name : {"/a", "a", "/", "/ab"}) {
    std::string key;
    std::string expected;
    for (int depth = 0; depth < 500; ++depth) key += name;
    JTPDFDict dict;
    dict[key] = "1";
    const std::string text = dict.AsString();
    EXPECT_EQ(Count(text, "<<"), Count(text, ">>") + (name == "a" ? 1 : 0)) << name;
  }
  JTPDFDict dict;
  std::string key;
  for (int depth = 0; depth < 500; ++depth) key += "/a";
  dict[key] = "1";
  EXPECT_EQ(499u, Count(dict.AsString(), "<<"));
}
