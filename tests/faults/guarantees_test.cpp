// What the parts of a document promise when memory runs out: a line is added whole or not at all,
// an entry is set or the dictionary stays as it was.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "allocation_faults.h"
#include "graphics/canvas.h"
#include "objects/dict.h"
#include "objects/string_list.h"
#include "support/cases.h"
#include "support/failing_realloc.h"

namespace faults {

namespace {

// Runs deed on a subject of its own for every allocation that it makes, which fails, and lets check
// look at the subject behind it. Returns how many there were.
template <typename Subject, typename Make, typename Deed, typename Check>
long FailEach(const Make& make, const Deed& deed, const Check& check) {
  {
    Subject first = make();  // sets up constants, which are no leak
    deed(first);
  }
  long failed = 0;
  for (bool inside = true; inside; failed += inside) {
    SCOPED_TRACE("allocation " + std::to_string(failed));
    const long blocks = LiveBlocks();
    {
      Subject subject = make();
      bool thrown = false;
      FailAllocation(failed);
      try {
        deed(subject);
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      inside = StopFailingAllocations().failed;
      EXPECT_EQ(thrown, inside);
      if (inside) check(subject);
    }
    EXPECT_EQ(LiveBlocks(), blocks) << "memory leaked";
  }
  return failed;
}

const std::string kLongText =
    "a text too long for the room that the list has" + std::string(900, '.');
const char* const kLong = kLongText.c_str();

JTPDFStringList SomeLines() {
  JTPDFStringList list;
  list.Add("q", kLong);
  list.Add("Q");
  return list;
}

void ExpectSomeLines(const JTPDFStringList& list) {
  EXPECT_EQ(list.Text(), std::string("q ") + kLong + "\r\nQ");
}

TEST(StringListWithoutMemory, AddOfPartsLeavesTheListUnchanged) {
  EXPECT_GE(FailEach<JTPDFStringList>(
                SomeLines, [](JTPDFStringList& list) { list.Add("/Im1", "Do", kLong, kLong); },
                ExpectSomeLines),
            kReallocFails ? 1 : 0);
}

TEST(StringListWithoutMemory, AddOfOneTextLeavesTheListUnchanged) {
  EXPECT_GE(FailEach<JTPDFStringList>(
                SomeLines, [](JTPDFStringList& list) { list.Add(kLong); }, ExpectSomeLines),
            kReallocFails ? 1 : 0);
}

TEST(StringListWithoutMemory, AddOfCountedTextsLeavesTheListUnchanged) {
  EXPECT_GE(FailEach<JTPDFStringList>(
                SomeLines, [](JTPDFStringList& list) { list.Add(3u, kLong, "[", kLong); },
                ExpectSomeLines),
            kReallocFails ? 1 : 0);
}

TEST(StringListWithoutMemory, TextLeavesTheListUnchanged) {
  EXPECT_GE(FailEach<JTPDFStringList>(
                SomeLines, [](JTPDFStringList& list) { (void)list.Text(); }, ExpectSomeLines),
            1);
}

JTPDFDict SomeEntries() {
  JTPDFDict dict;
  dict["/Type"] = "/XObject";
  dict["/Resources/XObject/SomeQuiteLongNameOfAnImage"] = "12 0 R";
  return dict;
}

void ExpectSomeEntries(const JTPDFDict& dict) {
  const JTPDFDict expected = SomeEntries();
  EXPECT_TRUE(dict == expected) << dict.AsString();
}

TEST(DictWithoutMemory, AsStringLeavesTheEntries) {
  EXPECT_GE(FailEach<JTPDFDict>(
                SomeEntries, [](JTPDFDict& dict) { (void)dict.AsString(); }, ExpectSomeEntries),
            1);
}

TEST(DictWithoutMemory, CopyLeavesTheEntries) {
  EXPECT_GE(FailEach<JTPDFDict>(
                SomeEntries, [](JTPDFDict& dict) { JTPDFDict copy = dict; }, ExpectSomeEntries),
            3);
}

// A row that fails takes the whole new dictionary along; the one it was to replace is untouched.
TEST(DictWithoutMemory, RowsGiveAllEntriesOrNone) {
  const std::vector<JTPDFDictionaryItem> rows = {{"Source", L"a scanner with a rather long name"},
                                                 {"/Place/OfTheOriginal/Drawer", L"third"},
                                                 {"/Place/OfTheOriginal/Room", nullptr}};
  EXPECT_GE(FailEach<JTPDFDict>(
                SomeEntries,
                [&](JTPDFDict& dict) {
                  dict = JTPDFDict(static_cast<unsigned>(rows.size()), rows.data());
                },
                ExpectSomeEntries),
            6);
}

struct Drawing {
  const char* name;
  std::function<void(JTPDFCanvas&)> draw;
};

class DrawingWithoutMemory : public testing::TestWithParam<Drawing> {};

// The lines that stand are the first of those that were to be added, each whole.
TEST_P(DrawingWithoutMemory, AddsWholeLinesOnly) {
  const auto drawn = [](const std::function<void(JTPDFCanvas&)>& draw) {
    JTPDFCanvas canvas(1.0);
    FailAllocation(-1);
    draw(canvas);
    StopFailingAllocations();
    return canvas.GetContents().Text() + "\r\n";
  };
  const std::string all = drawn(GetParam().draw);
  const std::size_t start = drawn([](JTPDFCanvas&) {}).size();
  long failed = 0;
  for (bool inside = true; inside; failed += inside) {
    SCOPED_TRACE("allocation " + std::to_string(failed));
    const long blocks = LiveBlocks();
    {
      JTPDFCanvas canvas(1.0);
      bool thrown = false;
      FailAllocation(failed);
      try {
        GetParam().draw(canvas);
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      inside = StopFailingAllocations().failed;
      EXPECT_EQ(thrown, inside);
      const std::string text = canvas.GetContents().Text() + "\r\n";
      EXPECT_EQ(text, all.substr(0, text.size()));
      EXPECT_GE(text.size(), start);
      if (!inside) {
        EXPECT_EQ(text, all);
      }
      if (text.find("/Im12") != std::string::npos) {
        EXPECT_EQ(canvas.count("/Resources/XObject/Im12"), 1u) << "a line names nothing";
      }
    }
    EXPECT_EQ(LiveBlocks(), blocks) << "memory leaked";
  }
  EXPECT_GE(failed, kReallocFails ? 1 : 0);
}

const JTPDFBox kBox(JTPDFRect{10, 20, 300, 400, 30});
const JTPDFColor kRed(JTPDFRGBColor{200, 0, 0, 255});

INSTANTIATE_TEST_SUITE_P(
    Canvas, DrawingWithoutMemory,
    testing::Values(
        Drawing{"Image", [](JTPDFCanvas& canvas) { canvas.Image(12); }},
        Drawing{"ImageInBox", [](JTPDFCanvas& canvas) { canvas.Image(12, kBox); }},
        Drawing{"Fill", [](JTPDFCanvas& canvas) { canvas.Rectangle(kBox, kRed); }},
        Drawing{"Stroke", [](JTPDFCanvas& canvas) { canvas.Rectangle(kBox, kRed, 2); }},
        Drawing{"Both", [](JTPDFCanvas& canvas) { canvas.Rectangle(kBox, kRed, kRed, 2); }},
        Drawing{"Circle", [](JTPDFCanvas& canvas) { canvas.Circle(kBox, kRed, kRed, 2); }}),
    NameOf<Drawing>);

}  // namespace

}  // namespace faults
