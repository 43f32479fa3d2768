#include "objects/byte_buffer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <string>

#include "support/failing_new.h"
#include "support/failing_realloc.h"

TEST(ByteBufferAppend, KeepsAllBytesOverManyGrowths) {
  ByteBuffer buffer;
  std::string expected;
  for (int i = 0; i < 3000; ++i) {
    const std::string text(static_cast<std::size_t>(i % 97), static_cast<char>(i));
    buffer.Append(text);
    expected += text;
  }
  EXPECT_EQ(expected, std::string_view(buffer));
}

TEST(ByteBufferAppend, NothingNeedsNoMemory) {
  ByteBuffer buffer;
  buffer.Append({});
  EXPECT_EQ(nullptr, buffer.Data());
  EXPECT_EQ(0u, buffer.Size());
}

TEST(ByteBufferReserve, GivesRoomThatCountsOnceItIsTaken) {
  ByteBuffer buffer;
  buffer.Append("abc");
  char* const room = buffer.Reserve(2);
  room[0] = 'd';
  EXPECT_EQ("abc", std::string_view(buffer));
  buffer.TakeUpTo(room + 1);
  EXPECT_EQ("abcd", std::string_view(buffer));
}

TEST(ByteBufferReserve, WhatNoMemoryCanHoldLeavesTheBufferAsItWas) {
#ifdef JTPDF_SANITIZED
  GTEST_SKIP() << "the sanitizers end a process that asks for so much";
#endif
  ByteBuffer buffer;
  buffer.Append("abc");
  for (const std::size_t size :
       {std::numeric_limits<std::size_t>::max() - 1, std::numeric_limits<std::size_t>::max() / 2}) {
    EXPECT_THROW(buffer.Reserve(size), std::bad_alloc);
    EXPECT_EQ("abc", std::string_view(buffer));
  }
}

TEST(ByteBufferReserve, MakesDoWithWhatIsNeededWhereTwiceOfItIsRefused) {
  if (!kReallocFails) GTEST_SKIP() << "realloc cannot be made to fail in this build";
  ByteBuffer buffer;
  buffer.Append(std::string(1000, 'x'));
  allocationsLeft = 0;
  EXPECT_THROW(buffer.Append(std::string_view(buffer)), std::bad_alloc);
  allocationsLeft = -1;
  EXPECT_EQ(std::string(1000, 'x'), std::string_view(buffer));
  refusalsLeft = 1;
  errno = EDOM;
  buffer.Append(std::string_view("y"));
  buffer.Append(std::string(2000, 'z'));
  EXPECT_EQ(0, refusalsLeft);
  EXPECT_EQ(EDOM, errno) << "nothing failed";
  EXPECT_EQ(std::string(1000, 'x') + 'y' + std::string(2000, 'z'), std::string_view(buffer));
}

TEST(ByteBufferAppend, GrowsTwofold) {
  if (!kReallocFails) GTEST_SKIP() << "realloc is not counted in this build";
  ByteBuffer buffer;
  allocationsLeft = 1000;
  for (int i = 0; i < 1000000; ++i) buffer.Append("x");
  const long growths = 1000 - allocationsLeft;
  allocationsLeft = -1;
  EXPECT_GT(growths, 5);
  EXPECT_LT(growths, 20);
}

TEST(ByteBufferTrim, LeavesTheBytesAndCanGrowAgain) {
  ByteBuffer buffer;
  buffer.Trim();
  buffer.Append(std::string(5000, 'x'));
  buffer.Trim();
  buffer.Append("y");
  EXPECT_EQ(std::string(5000, 'x') + 'y', std::string_view(buffer));
}

TEST(ByteBufferTrim, LeavesNoRoom) {
  if (!kReallocFails) GTEST_SKIP() << "realloc cannot be made to fail in this build";
  ByteBuffer buffer;
  buffer.Append("abc");
  buffer.Trim();
  allocationsLeft = 0;
  EXPECT_THROW(buffer.Append("d"), std::bad_alloc);
  allocationsLeft = -1;
}

TEST(ByteBufferMove, HandsTheBytesOver) {
  ByteBuffer from;
  from.Append("abc");
  const char* const bytes = from.Data();
  ByteBuffer to(std::move(from));
  EXPECT_EQ(bytes, to.Data());
  EXPECT_EQ("abc", std::string_view(to));
}
