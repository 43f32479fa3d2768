#include "output/file_sink.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <ios>
#include <iostream>
#include <string>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"
#include "support/doc.h"
#include "support/temp_dir.h"

// What the sink has handed to the system so far.
class FileSinkTest : public testing::Test {
 protected:
  FileSinkTest() : sink_(path_.wstring().c_str()) {}

  std::string Written() { return ReadFile(path_); }

  TempDir dir_;
  const std::filesystem::path path_ = dir_.File("a.pdf");
  FileSink sink_;
};

TEST_F(FileSinkTest, SmallTextsWaitAndLargeOnesTakeThemAlong) {
  sink_.Open();
  sink_.Write("a", "b");
  EXPECT_EQ("", Written());
  const std::string large(1024, 'x');
  sink_.Write("c", large);
  EXPECT_EQ("abc" + large, Written());
  sink_.Write("d", {});
  sink_.Close();
  EXPECT_EQ("abc" + large + "d", Written());
}

TEST_F(FileSinkTest, WhatDoesNotFitTheBufferIsWritten) {
  sink_.Open();
  std::string expected;
  for (int i = 0; i < 9; ++i) {
    sink_.Write(std::string(1000, 'a'), {});
    expected += std::string(1000, 'a');
    EXPECT_EQ(i < 8 ? "" : expected, Written()) << i;
  }
}

TEST_F(FileSinkTest, CloseTwiceIsClosed) {
  sink_.Open();
  sink_.Close();
  sink_.Close();
  EXPECT_FALSE(sink_.IsGood());
  EXPECT_FALSE(sink_.IsUnfinished());
  EXPECT_THROW(sink_.Write("x", {}), std::ios_base::failure);
}

TEST_F(FileSinkTest, AbandonLeavesWhatThereIs) {
  sink_.Open();
  sink_.Write("a", {});
  EXPECT_TRUE(sink_.IsUnfinished());
  sink_.Abandon("b");
  EXPECT_EQ("ab", Written());
  EXPECT_FALSE(sink_.IsUnfinished());
}

// A host that closed its standard streams prints into whatever file gets their numbers.
TEST(FileDocument, NeverTakesADescriptorOfAStandardStream) {
  TempDir dir;
  Doc doc(dir.File("a.pdf"));
  int saved[3];
  for (int fd = 0; fd < 3; ++fd) saved[fd] = dup(fd);
  for (int fd = 0; fd < 3; ++fd) close(fd);
  JTPDFSetDiagnosticMode(true);
  const std::int32_t initialized = InitPdfDoc(doc);
  const std::int32_t again = InitPdfDoc(doc);  // refused, which is printed
  const ssize_t printed = write(STDERR_FILENO, "x", 1);
  JTPDFSetDiagnosticMode(false);
  for (int fd = 0; fd < 3; ++fd) {
    dup2(saved[fd], fd);
    close(saved[fd]);
  }
  std::cerr.clear();
  EXPECT_EQ(0, initialized);
  EXPECT_NE(0, again);
  EXPECT_EQ(-1, printed);
  EXPECT_EQ(0, FinalizePdfDoc(doc, nullptr));
  EXPECT_BYTES(Doc().Init().Finish(), ReadFile(dir.File("a.pdf")));
}
