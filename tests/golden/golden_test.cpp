// What the library writes today, byte for byte against files/. JTPDF_UPDATE_GOLDENS=1 in the
// environment rewrites the files instead: look at every difference before it is committed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "byte_reader.h"
#include "golden_documents.h"
#include "pdf_structure.h"

namespace golden {

// How GoogleTest names a document.
std::ostream& operator<<(std::ostream& out, const Document& document) {
  return out << document.name;
}

namespace {

std::string GoldenPath(const Document& document) {
  return std::string(JTPDF_GOLDEN_FILES) + "/" + document.name + ".pdf";
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + " cannot be read");
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

// A failure shows the surroundings of the first difference.
testing::AssertionResult SameBytes(const std::string& expected, const std::string& actual) {
  if (expected == actual) return testing::AssertionSuccess();
  const std::size_t at = static_cast<std::size_t>(
      std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end()).first -
      expected.begin());
  const std::size_t from = at < 100 ? 0 : at - 100;
  const auto around = [&](const std::string& bytes) {
    return "..." + Escaped(std::string_view(bytes).substr(from, at - from)) + " >>> " +
           Escaped(std::string_view(bytes).substr(std::min(at, bytes.size()), 100)) + "...";
  };
  return testing::AssertionFailure()
         << "first difference at byte " << at << " (of " << expected.size() << " expected, "
         << actual.size() << " written)\nexpected " << around(expected) << "\nwritten  "
         << around(actual)
         << "\nIf the difference is meant: JTPDF_UPDATE_GOLDENS=1 rewrites the goldens.";
}

bool Updating() {
  const char* update = std::getenv("JTPDF_UPDATE_GOLDENS");
  return update != nullptr && std::string(update) == "1";
}

std::string WrittenToFile(const Document& document) {
  const std::string path = testing::TempDir() + "golden_" + document.name + ".pdf";
  WriteToFile(document, path);
  const std::string bytes = ReadFile(path);
  std::filesystem::remove(path);
  return bytes;
}

class Golden : public testing::TestWithParam<Document> {};

TEST_P(Golden, FileDocumentGivesTheKeptBytes) {
  const std::string bytes = WrittenToFile(GetParam());
  if (Updating()) {
    std::ofstream file(GoldenPath(GetParam()), std::ios::binary | std::ios::trunc);
    ASSERT_TRUE(file << bytes << std::flush) << GoldenPath(GetParam());
  }
  EXPECT_TRUE(SameBytes(ReadFile(GoldenPath(GetParam())), bytes));
}

TEST_P(Golden, MemoryDocumentGivesTheSameBytes) {
  const std::string bytes = WriteToMemory(GetParam());
  if (!GetParam().finished) {
    EXPECT_EQ(bytes, "") << "there is nothing to fetch before the document is finalised";
    return;
  }
  EXPECT_TRUE(SameBytes(WrittenToFile(GetParam()), bytes));
}

TEST_P(Golden, StructureIsRightAndHoldsWhatTheHostWrote) {
  Facts facts;
  WriteToMemory(GetParam(), &facts);
  StructureOptions options;
  options.closing_text = GetParam().closing != nullptr;
  options.open_objects = GetParam().open;
  const StructureReport report = CheckStructure(ReadFile(GoldenPath(GetParam())), options);
  if (GetParam().damage != nullptr) {
    EXPECT_NE(report.error.find(GetParam().damage), std::string::npos) << report.error;
    return;
  }
  EXPECT_EQ(report.error, "") << "at byte " << report.offset;
  EXPECT_EQ(report.pages, facts.pages.size());
  EXPECT_EQ(report.images, static_cast<std::uint64_t>(facts.images));
  EXPECT_EQ(report.forms, static_cast<std::uint64_t>(facts.forms));
}

INSTANTIATE_TEST_SUITE_P(Documents, Golden, testing::ValuesIn(Documents()),
                         [](const auto& row) { return std::string(row.param.name); });

// A golden that no document writes any more would be kept for nothing.
TEST(GoldenFiles, EachBelongsToADocument) {
  for (const auto& entry : std::filesystem::directory_iterator(JTPDF_GOLDEN_FILES)) {
    EXPECT_EQ(entry.path().extension(), ".pdf") << entry.path();
    EXPECT_NO_THROW(FindDocument(entry.path().stem().string())) << entry.path();
  }
}

}  // namespace
}  // namespace golden
