// Writes to the sink of a memory document fail once, at every place of the reference document. No
// buffer in memory fails but for want of memory, so one that does is put into the document.

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <new>
#include <ostream>
#include <streambuf>

#include "allocation_faults.h"
#include "document/document.h"
#include "reference_document.h"
#include "support/cases.h"

namespace faults {

namespace {

// The document's sink is private, and no business of hosts: an explicit instantiation may name it.
std::ostream* SinkOf(JTPDFDocument& doc);

template <std::ostream* JTPDFDocument::*Sink>
struct SinkAccess {
  friend std::ostream* SinkOf(JTPDFDocument& doc) { return doc.*Sink; }
};

template struct SinkAccess<&JTPDFDocument::output>;

enum class Effect { kNothing, kHalf, kThrowsBadAlloc, kThrowsFailure };

// Hands everything on to the buffer it replaces, but for one write.
class FailingBuffer : public std::streambuf {
 public:
  FailingBuffer(int at, Effect effect, int error) : at_(at), effect_(effect), error_(error) {}

  void Replace(std::ostream& sink) { next_ = sink.rdbuf(this); }
  int Writes() const { return writes_; }
  int Faults() const { return faults_; }

 protected:
  std::streamsize xsputn(const char* data, std::streamsize size) override {
    if (writes_++ != at_) return next_->sputn(data, size);
    ++faults_;
    const std::streamsize written = effect_ == Effect::kHalf ? next_->sputn(data, size / 2) : 0;
    errno = error_;
    if (effect_ == Effect::kThrowsBadAlloc) throw std::bad_alloc();
    if (effect_ == Effect::kThrowsFailure) throw std::ios_base::failure("the buffer failed");
    return written;
  }

  int overflow(int c) override {
    const char byte = static_cast<char>(c);
    return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
  }

  pos_type seekoff(off_type offset, std::ios_base::seekdir whence,
                   std::ios_base::openmode which) override {
    return next_->pubseekoff(offset, whence, which);
  }

 private:
  const int at_;
  const Effect effect_;
  const int error_;
  std::streambuf* next_ = nullptr;
  int writes_ = 0;
  int faults_ = 0;
};

struct Row {
  const char* name;
  Effect effect;
  int error;
};

class MemoryFaults : public testing::TestWithParam<Row> {};

Outcome RunWith(FailingBuffer& buffer, After after) {
  Options options;
  options.after = after;
  options.prepare = [&](JTPDFDocument* doc) { buffer.Replace(*SinkOf(*doc)); };
  return RunReference(options);
}

TEST_P(MemoryFaults, FailOnceAtEveryPlace) {
  const auto [name, effect, error] = GetParam();
  FailingBuffer sound(-1, effect, error);
  ASSERT_TRUE(RunWith(sound, After::kStop).finalized);
  ASSERT_GT(sound.Writes(), 10);
  int injected = 0;
  for (const After after : {After::kStop, After::kCarryOn, After::kRetry, After::kAbandon}) {
    for (int at = 0; at < sound.Writes(); ++at) {
      SCOPED_TRACE("write " + std::to_string(at) + ", host " +
                   std::to_string(static_cast<int>(after)));
      const long blocks = LiveBlocks();
      {
        FailingBuffer buffer(at, effect, error);
        const Outcome outcome = RunWith(buffer, after);
        if (after == After::kAbandon && buffer.Faults() == 0) continue;
        ++injected;
        ASSERT_EQ(buffer.Faults(), 1);
        ASSERT_EQ(outcome.misbehavior, "");
        ASSERT_FALSE(outcome.finalized) << "success for bytes that are not whole";
        ASSERT_EQ(outcome.memory, "");
        ASSERT_FALSE(outcome.failures.empty());
        const bool thrown = effect == Effect::kThrowsBadAlloc;
        ASSERT_EQ(outcome.failures[0].exception, thrown ? "std::bad_alloc" : "");
        if (!thrown) {
          ASSERT_EQ(outcome.failures[0].code, error == 0 ? -1 : error);
        }
      }
      ASSERT_EQ(LiveBlocks(), blocks) << "memory leaked";
    }
  }
  std::cout << "faults: " << name << ": " << injected << " injected, no false success\n";
}

INSTANTIATE_TEST_SUITE_P(Sink, MemoryFaults,
                         testing::Values(Row{"NothingWithENOSPC", Effect::kNothing, ENOSPC},
                                         Row{"NothingWithEIO", Effect::kNothing, EIO},
                                         Row{"NothingWithoutAReason", Effect::kNothing, 0},
                                         Row{"HalfWithEDQUOT", Effect::kHalf, EDQUOT},
                                         Row{"BadAlloc", Effect::kThrowsBadAlloc, ENOMEM},
                                         Row{"StreamFailure", Effect::kThrowsFailure, EPIPE}),
                         NameOf<Row>);

}  // namespace

}  // namespace faults
