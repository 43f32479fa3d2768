// The page tree, in numbers worked out by hand and by walking the finished tree.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "document/document.h"
#include "support/bytes.h"
#include "support/doc.h"
#include "support/pdf.h"

// A document of that many pages, all of the form 2; their contents are objects 3 and up.
Pdf Pages(int count) {
  Doc doc;
  doc.Init().Form();
  for (int i = 0; i < count; ++i) doc.Page(2);
  return Pdf(doc.Finish());
}

// A node of the tree as the file tells it.
struct Node {
  int count = -1;
  int parent = -1;
  std::vector<int> kids;
};

int IntBehind(const std::string& text, const std::string& key) {
  const std::size_t at = text.find(key);
  return at == std::string::npos ? -1 : std::stoi(text.substr(at + key.size()));
}

Node ReadNode(const Pdf& pdf, int object) {
  const std::string text = pdf.Object(object);
  EXPECT_EQ(1, Count(text, "/Type /Pages\r\n")) << text;
  Node node;
  node.count = IntBehind(text, "/Count ");
  node.parent = IntBehind(text, "/Parent ");
  const std::size_t begin = text.find("/Kids [") + 7;
  std::string kids = text.substr(begin, text.find(']', begin) - begin);
  while (!kids.empty()) {
    std::size_t used = 0;
    node.kids.push_back(std::stoi(kids, &used));
    EXPECT_EQ(" 0 R", kids.substr(used, 4));
    kids.erase(0, used + 5);
  }
  return node;
}

TEST(JTPDFDocumentFinalizePages, NoPagesGiveARootWithoutKids) {
  EXPECT_BYTES(Lines("3 0 obj", "<<", "/Count 0", "/Kids ]", "/Type /Pages", ">>", "endobj"),
               Pages(0).Object(3));
}

TEST(JTPDFDocumentFinalizePages, OnePageHangsAtTheRoot) {
  const Pdf pdf = Pages(1);
  EXPECT_EQ(1, Count(pdf.Object(4), "/Parent 5 0 R\r\n"));
  EXPECT_BYTES(Lines("5 0 obj", "<<", "/Count 1", "/Kids [4 0 R]", "/Type /Pages", ">>", "endobj"),
               pdf.Object(5));
  EXPECT_EQ(6, pdf.Root());
}

TEST(JTPDFDocumentFinalizePages, TenPagesHangAtTheRoot) {
  // Contents 3 to 12, pages 13 to 22.
  const Pdf pdf = Pages(10);
  EXPECT_BYTES(
      Lines("23 0 obj", "<<", "/Count 10",
            "/Kids [13 0 R 14 0 R 15 0 R 16 0 R 17 0 R 18 0 R 19 0 R 20 0 R 21 0 R 22 0 R]",
            "/Type /Pages", ">>", "endobj"),
      pdf.Object(23));
  EXPECT_EQ(24, pdf.Root());
}

TEST(JTPDFDocumentFinalizePages, ElevenPagesHangAtTwoNodes) {
  // Contents 3 to 13, pages 14 to 24, nodes 25 and 26, root 27.
  const Pdf pdf = Pages(11);
  EXPECT_EQ(1, Count(pdf.Object(14), "/Parent 25 0 R\r\n"));
  EXPECT_EQ(1, Count(pdf.Object(23), "/Parent 25 0 R\r\n"));
  EXPECT_EQ(1, Count(pdf.Object(24), "/Parent 26 0 R\r\n"));
  EXPECT_BYTES(
      Lines("25 0 obj", "<<", "/Count 10",
            "/Kids [14 0 R 15 0 R 16 0 R 17 0 R 18 0 R 19 0 R 20 0 R 21 0 R 22 0 R 23 0 R]",
            "/Parent 27 0 R", "/Type /Pages", ">>", "endobj"),
      pdf.Object(25));
  EXPECT_BYTES(Lines("26 0 obj", "<<", "/Count 1", "/Kids [24 0 R]", "/Parent 27 0 R",
                     "/Type /Pages", ">>", "endobj"),
               pdf.Object(26));
  EXPECT_BYTES(
      Lines("27 0 obj", "<<", "/Count 11", "/Kids [25 0 R 26 0 R]", "/Type /Pages", ">>", "endobj"),
      pdf.Object(27));
  EXPECT_EQ(28, pdf.Root());
}

TEST(JTPDFDocumentFinalizePages, OneHundredAndOnePagesHaveTwoLevels) {
  // Contents 3 to 103, pages 104 to 204, eleven nodes 205 to 215, two nodes 216 and 217, root 218.
  const Pdf pdf = Pages(101);
  for (int i = 0; i < 11; ++i) {
    const Node node = ReadNode(pdf, 205 + i);
    EXPECT_EQ(i < 10 ? 10 : 1, node.count);
    EXPECT_EQ(i < 10 ? 216 : 217, node.parent);
    EXPECT_EQ(104 + 10 * i, node.kids.front());
    EXPECT_EQ(i < 10 ? 10u : 1u, node.kids.size());
  }
  EXPECT_EQ(100, ReadNode(pdf, 216).count);
  EXPECT_EQ(1, ReadNode(pdf, 217).count);
  EXPECT_EQ(std::vector<int>({215}), ReadNode(pdf, 217).kids);
  EXPECT_EQ(std::vector<int>({216, 217}), ReadNode(pdf, 218).kids);
  EXPECT_EQ(101, ReadNode(pdf, 218).count);
  EXPECT_EQ(219, pdf.Root());
}

TEST(JTPDFDocumentFinalizePages, AFullNodeClaimsAllThePagesItCouldHold) {
  // 195 pages: 20 nodes, the last of 5 pages; two nodes of ten kids each above them.
  const Pdf pdf = Pages(195);
  const int root = pdf.Root() - 1;
  EXPECT_EQ(195, ReadNode(pdf, root).count);
  EXPECT_EQ(100, ReadNode(pdf, root - 2).count);
  EXPECT_EQ(100, ReadNode(pdf, root - 1).count) << "95 pages below it, and it claims 100";
  EXPECT_EQ(10u, ReadNode(pdf, root - 1).kids.size());
  EXPECT_EQ(5, ReadNode(pdf, root - 3).count);
}

TEST(JTPDFDocumentFinalizePages, APartialNodeClaimsTheRemainder) {
  // 1,105 pages: 111 nodes, 12 above them (the last of one kid), 2 above those, the root.
  const Pdf pdf = Pages(1105);
  const int root = pdf.Root() - 1;
  EXPECT_EQ(1105, ReadNode(pdf, root).count);
  EXPECT_EQ(105, ReadNode(pdf, root - 1).count) << "1105 % 1000";
  EXPECT_EQ(1000, ReadNode(pdf, root - 2).count);
  EXPECT_EQ(5, ReadNode(pdf, root - 3).count) << "1105 % 100";
  EXPECT_EQ(100, ReadNode(pdf, root - 4).count);
}

class PageTree : public testing::TestWithParam<int> {};

// Whatever the number: from the root every page is reached once, in order, each at most ten kids
// wide, and each kid names its parent.
TEST_P(PageTree, LeadsToEveryPageInOrder) {
  const int count = GetParam();
  const Pdf pdf = Pages(count);
  const int root = pdf.Root() - 1;
  EXPECT_EQ(root + 2, pdf.Info());
  EXPECT_EQ(pdf.Info() + 1, pdf.Size());
  EXPECT_EQ(count, ReadNode(pdf, root).count);
  EXPECT_EQ(-1, ReadNode(pdf, root).parent);

  std::vector<int> level = {root};
  const int firstPage = 3 + count;
  while (level.front() >= firstPage + count) {
    std::vector<int> kids;
    for (const int object : level) {
      const Node node = ReadNode(pdf, object);
      EXPECT_LE(node.kids.size(), 10u);
      for (const int kid : node.kids) {
        EXPECT_EQ(object, IntBehind(pdf.Object(kid), "/Parent ")) << "object " << kid;
        kids.push_back(kid);
      }
    }
    ASSERT_FALSE(kids.empty());
    level = kids;
  }
  ASSERT_EQ(static_cast<std::size_t>(count), level.size());
  for (int i = 0; i < count; ++i) {
    const int page = level[static_cast<std::size_t>(i)];
    EXPECT_EQ(firstPage + i, page);
    EXPECT_EQ(3 + i, IntBehind(pdf.Object(page), "/Contents "));
  }
}

INSTANTIATE_TEST_SUITE_P(JTPDFDocumentFinalizePages, PageTree,
                         testing::Values(1, 2, 9, 10, 11, 19, 20, 21, 99, 100, 101, 109, 110, 111,
                                         195, 999, 1000, 1001, 1105),
                         testing::PrintToStringParamName());
