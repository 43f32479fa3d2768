// A sink fails once, at every place of the reference document: one that is put into the document,
// and a callback of a host.

#include <gtest/gtest.h>

#include <cerrno>
#include <ios>
#include <iostream>
#include <memory>
#include <new>
#include <string>

#include "allocation_faults.h"
#include "document/document.h"
#include "output/memory_sink.h"
#include "reference_document.h"
#include "support/cases.h"

namespace faults {

namespace {

enum class Effect { kNothing, kHalf, kThrowsBadAlloc };

struct Row {
  const char* name;
  Effect effect;
  int error;
};

// The writes that a sink was asked for, and the one of them that fails.
struct Plan {
  Row row;
  int at;
  int writes = 0;
  int faults = 0;
};

// Hands everything on to a sink in memory, but for one write.
class FailingSink : public Sink {
 public:
  explicit FailingSink(Plan& plan) : plan_(plan) {}

  void Open() override { memory_.Open(); }
  bool IsGood() const override { return good_; }
  bool IsUnfinished() const override { return false; }
  void Abandon(std::string_view) noexcept override {}
  void Close() override { memory_.Close(); }

  void Write(std::string_view text, std::string_view data) override {
    if (!good_) ThrowSinkFailure();
    if (plan_.writes++ != plan_.at) return memory_.Write(text, data);
    ++plan_.faults;
    good_ = false;
    if (plan_.row.effect == Effect::kHalf) memory_.Write(text.substr(0, text.size() / 2), {});
    if (plan_.row.effect == Effect::kThrowsBadAlloc) throw std::bad_alloc();
    errno = plan_.row.error;
    ThrowSinkFailure();
  }

 private:
  Plan& plan_;
  MemorySink memory_;
  bool good_ = true;
};

// A host's function that takes all bytes but those of one call.
std::int32_t Take(void* context, const char*, std::size_t size) {
  Plan& plan = *static_cast<Plan*>(context);
  EXPECT_GT(size, 0u);
  EXPECT_EQ(plan.faults, 0) << "it is not called again behind a failure";
  if (plan.writes++ != plan.at) return 0;
  ++plan.faults;
  if (plan.row.effect == Effect::kThrowsBadAlloc) throw std::bad_alloc();
  return plan.row.error;
}

using SetSink = void (*)(Options&, Plan&);

void SetFailingSink(Options& options, Plan& plan) {
  options.create = [&] {
    return new JTPDFDocument(PDFCoordinateUnitMillimeter, std::make_unique<FailingSink>(plan));
  };
}

void SetCallback(Options& options, Plan& plan) {
  options.volume = 40;  // what is gathered is handed on many times too
  options.write = Take;
  options.context = &plan;
}

Outcome RunWith(SetSink setSink, Plan& plan, After after) {
  Options options;
  options.after = after;
  options.openObjects = true;
  setSink(options, plan);
  return RunReference(options);
}

void FailOnceAtEveryPlace(SetSink setSink, const Row& row, int leastPlaces) {
  Plan sound = {row, -1};
  ASSERT_TRUE(RunWith(setSink, sound, After::kStop).finalized);
  ASSERT_GT(sound.writes, leastPlaces);
  int injected = 0;
  for (const After after : {After::kStop, After::kCarryOn, After::kRetry, After::kAbandon}) {
    for (int at = 0; at < sound.writes; ++at) {
      SCOPED_TRACE("write " + std::to_string(at) + ", host " +
                   std::to_string(static_cast<int>(after)));
      const long blocks = LiveBlocks();
      {
        Plan plan = {row, at};
        const Outcome outcome = RunWith(setSink, plan, after);
        if (after == After::kAbandon && plan.faults == 0) continue;
        ++injected;
        ASSERT_EQ(plan.faults, 1);
        ASSERT_EQ(outcome.misbehavior, "");
        ASSERT_FALSE(outcome.finalized) << "success for bytes that are not whole";
        ASSERT_EQ(outcome.memory, "");
        ASSERT_FALSE(outcome.failures.empty());
        const bool thrown = row.effect == Effect::kThrowsBadAlloc;
        ASSERT_EQ(outcome.failures[0].exception, thrown ? "std::bad_alloc" : "");
        if (!thrown) {
          ASSERT_EQ(outcome.failures[0].code, row.error == 0 ? -1 : row.error);
        }
      }
      ASSERT_EQ(LiveBlocks(), blocks) << "memory leaked";
    }
  }
  std::cout << "faults: " << row.name << ": " << injected << " injected, no false success\n";
}

class SinkFaults : public testing::TestWithParam<Row> {};

TEST_P(SinkFaults, FailOnceAtEveryPlace) {
  FailOnceAtEveryPlace(SetFailingSink, GetParam(), 30);
}

INSTANTIATE_TEST_SUITE_P(Sink, SinkFaults,
                         testing::Values(Row{"NothingWithENOSPC", Effect::kNothing, ENOSPC},
                                         Row{"NothingWithEIO", Effect::kNothing, EIO},
                                         Row{"NothingWithoutAReason", Effect::kNothing, 0},
                                         Row{"HalfWithEFBIG", Effect::kHalf, EFBIG},
                                         Row{"BadAlloc", Effect::kThrowsBadAlloc, ENOMEM}),
                         NameOf<Row>);

class CallbackFaults : public testing::TestWithParam<Row> {};

TEST_P(CallbackFaults, FailOnceAtEveryPlace) {
  FailOnceAtEveryPlace(SetCallback, GetParam(), 5);
}

INSTANTIATE_TEST_SUITE_P(Callback, CallbackFaults,
                         testing::Values(Row{"CodeOfTheSystem", Effect::kNothing, ENOSPC},
                                         Row{"CodeOfTheHost", Effect::kNothing, 123456},
                                         Row{"NegativeCode", Effect::kNothing, -7},
                                         Row{"MinusOne", Effect::kNothing, -1},
                                         Row{"BadAlloc", Effect::kThrowsBadAlloc, ENOMEM}),
                         NameOf<Row>);

}  // namespace

}  // namespace faults
