#include "objects/entry_tree.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

TEST(EntryTree, NestsWhateverPathsComeTogether) {
  EntryTree tree;
  for (const char* key : {"/B/A/x", "/A/k", "/A-B/x", "/A/B/C/D", "/A/B/z", "/C", "/A/Ba"}) {
    EXPECT_TRUE(tree.Set(key, "1")) << key;
  }
  EXPECT_BYTES(
      Lines("/A-B", "<<", "/x 1", ">>", "/A", "<<", "/B", "<<", "/C", "<<", "/D 1", ">>", "/z 1",
            ">>", "/Ba 1", "/k 1", ">>", "/B", "<<", "/A", "<<", "/x 1", ">>", ">>", "/C 1"),
      tree.AsString());
}

TEST(EntryTree, ValuesStandAsTheyAre) {
  EntryTree tree;
  EXPECT_TRUE(tree.Set("/A/B", "<< /X 1\r\n/Y (a\r\nb) >>"));
  EXPECT_BYTES(Lines("/A", "<<", "/B << /X 1", "/Y (a", "b) >>", ">>"), tree.AsString());
}

TEST(EntryTree, ALaterValueReplacesAnEarlierOne) {
  EntryTree tree;
  EXPECT_TRUE(tree.Set("/A", "1"));
  EXPECT_TRUE(tree.Set("/A", "2"));
  EXPECT_BYTES(Lines("/A 2"), tree.AsString());
}

TEST(EntryTree, RefusesWhatIsNoEntryAndStaysAsItWas) {
  EntryTree tree;
  EXPECT_TRUE(tree.Set("/A/B", "1"));
  EXPECT_FALSE(tree.Set("A", "1"));
  EXPECT_FALSE(tree.Set("/C", "1 2"));
  EXPECT_FALSE(tree.Set("/A", "1")) << "paths lead through it";
  EXPECT_FALSE(tree.Set("/A/B/C", "1")) << "it leads through a value";
  EXPECT_TRUE(tree.Set("/A/Bc", "1"));
  EXPECT_TRUE(tree.Set("/A-", "1"));
  EXPECT_BYTES(Lines("/A- 1", "/A", "<<", "/B 1", "/Bc 1", ">>"), tree.AsString());
}

TEST(EntryTree, FindsWhatLeadsThroughAKeyBehindKeysThatBeginAlike) {
  EntryTree tree;
  ASSERT_TRUE(tree.Set("/A-B", "1"));  // between "/A" and "/A/C"
  ASSERT_TRUE(tree.Set("/A/C", "2"));
  EXPECT_FALSE(tree.Set("/A", "3"));
  EXPECT_TRUE(tree.Set("/A-", "4"));
  EXPECT_TRUE(tree.Set("/A/C", "5"));
  EXPECT_BYTES(Lines("/A- 4", "/A-B 1", "/A", "<<", "/C 5", ">>"), tree.AsString());
}

TEST(EntryTree, OwnEntriesTakeThePlaceOfWhatIsInTheirWay) {
  EntryTree tree;
  tree.Set("/A", "1");
  tree.Set("/B/C/D", "1");
  tree.Set("/B/CD", "1");
  tree.Overrule("/A/X", "2");
  tree.Overrule("/B/C", "2");
  EXPECT_BYTES(Lines("/A", "<<", "/X 2", ">>", "/B", "<<", "/C 2", "/CD 1", ">>"), tree.AsString());
}

TEST(EntryTree, NothingGivesNothing) {
  EXPECT_EQ("", EntryTree().AsString());
  EXPECT_TRUE(EntryTree().IsEmpty());
}
