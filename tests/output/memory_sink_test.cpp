#include "output/memory_sink.h"

#include <gtest/gtest.h>

#include <ios>
#include <limits>
#include <new>
#include <string>

TEST(MemorySink, GivesItsBytesWhenItIsClosed) {
  MemorySink sink;
  sink.Open();
  sink.Write("text", "data");
  sink.Write({}, {});
  sink.Write("more", {});
  EXPECT_EQ(nullptr, sink.Data().data());
  sink.Close();
  EXPECT_EQ("textdatamore", sink.Data());
  EXPECT_EQ('\0', sink.Data().data()[12]);
}

TEST(MemorySink, LosesWhatIsWrittenAfterwards) {
  MemorySink sink;
  sink.Open();
  sink.Write("text", {});
  sink.Close();
  const char* const bytes = sink.Data().data();
  sink.Write(std::string(100000, 'x'), std::string(100000, 'x'));
  sink.Close();
  EXPECT_TRUE(sink.IsGood());
  EXPECT_EQ("text", sink.Data());
  EXPECT_EQ(bytes, sink.Data().data()) << "whoever fetched the bytes keeps them";
}

TEST(MemorySink, TakesNothingMoreOnceItCouldNotGrow) {
#ifdef JTPDF_SANITIZED
  GTEST_SKIP() << "the sanitizers end a process that asks for so much";
#endif
  MemorySink sink;
  sink.Open();
  // Never read: there is no memory for so much.
  const std::string_view endless("x", std::numeric_limits<std::size_t>::max() / 4);
  EXPECT_THROW(sink.Write("text", endless), std::bad_alloc);
  EXPECT_FALSE(sink.IsGood());
  EXPECT_THROW(sink.Write("x", {}), std::ios_base::failure);
  EXPECT_EQ(nullptr, sink.Data().data());
}

TEST(MemorySink, IsNeverUnfinished) {
  MemorySink sink;
  sink.Open();
  sink.Write("text", {});
  EXPECT_FALSE(sink.IsUnfinished());
  sink.Abandon("x");
}
