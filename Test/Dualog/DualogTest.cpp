#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Dualog/Dualog.h"
#include "Platform/Orm/ActivityManagerConfig.h"
#include "Platform/Orm/String.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Handles live as long as the process.
Dualog::Handle first("DualogTestFirst", "Test/First");
Dualog::Handle second("DualogTestSecond", "Test/Second");

/// Keeps what is traced.
class Capture : public Dualog::Sink {
 public:
  void line(const Dualog::Line& line) override {
    texts.emplace_back(line.text);
    formatted.push_back(Dualog::format(line));
    times.push_back(line.time);
    lines.push_back(line.line);
    functions.emplace_back(line.function);
  }

  std::vector<std::string> texts;
  std::vector<std::string> formatted;
  std::vector<Orm::Seconds> times;
  std::vector<unsigned> lines;
  std::vector<std::string> functions;
};

/// Captures the text trace at time 12.5, and leaves everything off.
class DualogTest : public testing::Test {
 protected:
  void SetUp() override {
    Orm::ActivityManagerConfig::instanceIs(
        Orm::make<Orm::Clock>(std::make_unique<Orm::VirtualTime>(12.5)));
    EXPECT_EQ(Dualog::sinkIs(&capture_), nullptr);
  }
  void TearDown() override {
    EXPECT_EQ(Dualog::sinkIs(nullptr), &capture_);
    Dualog::fastTraceIs(true);  // empties it
    Dualog::fastTraceIs(false);
    first.levelIs(Dualog::kAllOff);
    second.levelIs(Dualog::kAllOff);
    Orm::ActivityManagerConfig::instanceIs(nullptr);
  }

  static std::vector<std::string> fastTexts() {
    std::vector<std::string> all;
    Zimlog::read([&](const Zimlog::Descriptor&, std::int64_t, std::string_view text) {
      all.emplace_back(text);
    });
    return all;
  }

  Capture capture_;
};

/// Counts how often it is asked for its string form.
struct Costly {
  int* asked;
  void appendTo(std::string& out) const {
    ++*asked;
    out += "costly";
  }
};

TEST_F(DualogTest, Levels_TheHigherAreOffTheLowerOn) {
  EXPECT_EQ(first.level(), Dualog::kAllOff);
  EXPECT_FALSE(first.enabled(0));
  first.levelIs(5);
  for (int level = 0; level <= Dualog::kHighestLevel; ++level) {
    EXPECT_EQ(first.enabled(level), level <= 5);
    EXPECT_EQ(first.messageEnabled(level), level <= 5);
    EXPECT_FALSE(second.enabled(level));
  }
}

TEST_F(DualogTest, IsOn_WhenEitherTraceWantsAnything) {
  EXPECT_FALSE(first.isOn());
  first.levelIs(0);
  EXPECT_TRUE(first.isOn());
  EXPECT_FALSE(second.isOn());
  first.levelIs(Dualog::kAllOff);
  EXPECT_FALSE(first.isOn());
  Dualog::fastTraceIs(true);
  EXPECT_TRUE(first.isOn());
  Dualog::fastTraceIs(false);
  EXPECT_FALSE(first.isOn());
}

TEST_F(DualogTest, Levels_BeyondTheEndsAreTheEnds) {
  first.levelIs(100);
  EXPECT_EQ(first.level(), Dualog::kHighestLevel);
  first.levelIs(-100);
  EXPECT_EQ(first.level(), Dualog::kAllOff);
}

TEST_F(DualogTest, Handles_AreFoundByNameAndListedByIt) {
  EXPECT_EQ(Dualog::handle("DualogTestSecond"), &second);
  EXPECT_EQ(Dualog::handle("DualogTest"), nullptr);
  const auto all = Dualog::handles();
  EXPECT_THAT(all, testing::IsSupersetOf({&first, &second}));
  EXPECT_TRUE(std::is_sorted(all.begin(), all.end(), [](const auto* a, const auto* b) {
    return std::string_view(a->name()) < b->name();
  }));
  EXPECT_STREQ(first.source(), "Test/First");
}

TEST_F(DualogTest, DisabledStatement_EvaluatesNothing) {
  int evaluated = 0;
  int asked = 0;
  const auto argument = [&] {
    ++evaluated;
    return Costly{&asked};
  };
  first.levelIs(7);
  DUALOG_TRACE(first, 8, argument());
  DUALOG_MESSAGE(first, "Test/First", 8, "void f()", "%s", argument());
  EXPECT_EQ(evaluated, 0);
  EXPECT_EQ(asked, 0);
  EXPECT_THAT(capture_.texts, IsEmpty());
}

TEST_F(DualogTest, EnabledStatement_EvaluatesEachArgumentOnce) {
  int evaluated = 0;
  int asked = 0;
  const auto argument = [&] {
    ++evaluated;
    return Costly{&asked};
  };
  first.levelIs(8);
  DUALOG_TRACE(first, 8, argument());
  EXPECT_EQ(evaluated, 1);
  EXPECT_EQ(asked, 1);
  DUALOG_MESSAGE(first, "Test/First", 8, "void f()", "%s", argument());
  EXPECT_EQ(evaluated, 2);
  Dualog::fastTraceIs(true);
  DUALOG_MESSAGE(first, "Test/First", 8, "void f()", "%s", argument());
  EXPECT_EQ(evaluated, 3);
}

TEST_F(DualogTest, Record_StreamsThePiecesOneAfterTheOther) {
  first.levelIs(8);
  DUALOG_TRACE(first, 8, "Machine::", __func__, ": ", 7, ' ', true, " ", Orm::String("path"), 0.5);
  EXPECT_THAT(capture_.texts, ElementsAre("Machine::TestBody: 7 true path0.5"));
}

TEST_F(DualogTest, Record_TellsTimeLineAndFunction) {
  first.levelIs(8);
  const unsigned line = __LINE__ + 1;
  DUALOG_TRACE(first, 3, "text");
  EXPECT_THAT(capture_.times, ElementsAre(12.5));
  EXPECT_THAT(capture_.lines, ElementsAre(line));
  EXPECT_THAT(capture_.functions, ElementsAre("TestBody"));
  EXPECT_THAT(capture_.formatted, ElementsAre("12.500000 DualogTestFirst 3 Test/First:" +
                                              std::to_string(line) + " TestBody text"));
}

TEST_F(DualogTest, Message_GoesToTheTracesThatAreOn) {
  const auto message = [] {
    DUALOG_MESSAGE(first, "Test/First", 5, "void Machine::handle()", " path:%s %s.", "/a", 3);
  };
  message();
  EXPECT_THAT(capture_.texts, IsEmpty());

  first.levelIs(5);
  message();
  EXPECT_THAT(capture_.texts, ElementsAre("void Machine::handle():  path:/a 3."));
  EXPECT_THAT(fastTexts(), IsEmpty());

  Dualog::fastTraceIs(true);
  message();
  EXPECT_THAT(capture_.texts, testing::SizeIs(2));
  EXPECT_THAT(fastTexts(), ElementsAre("void Machine::handle():  path:/a 3."));

  first.levelIs(4);
  message();
  EXPECT_THAT(capture_.texts, testing::SizeIs(2));
  EXPECT_THAT(fastTexts(), testing::SizeIs(2)) << "the fast trace takes all levels";

  Dualog::fastTraceIs(false);
  message();
  EXPECT_THAT(fastTexts(), testing::SizeIs(2));
}

TEST_F(DualogTest, Message_HasTheSameTextInBothTraces) {
  first.levelIs(5);
  Dualog::fastTraceIs(true);
  int asked = 0;
  DUALOG_MESSAGE(first, "Test/First", 5, "", "no signature, no arguments");
  DUALOG_MESSAGE(first, "Test/First", 5, "void f()", "%s|%s|%s|%s", 'c', true, -1, 2.5);
  DUALOG_MESSAGE(first, "Test/First", 5, "void f()", "%s%s", "%s", Orm::String("x%s"));
  DUALOG_MESSAGE(first, "Test/First", 5, "void f()", "%s", Costly{&asked});
  EXPECT_THAT(capture_.texts, ElementsAre("no signature, no arguments", "void f(): c|true|-1|2.5",
                                          "void f(): %sx%s", "void f(): costly"));
  EXPECT_EQ(fastTexts(), capture_.texts);
}

TEST_F(DualogTest, Message_HasOneDescriptorACallSite) {
  Dualog::fastTraceIs(true);
  for (int round = 0; round != 2; ++round) {
    DUALOG_MESSAGE(first, "Test/First", 5, "void f()", "round %s", round);
  }
  DUALOG_MESSAGE(first, "Test/First", 5, "void f()", "after");
  std::vector<const Zimlog::Descriptor*> descriptors;
  Zimlog::read([&](const Zimlog::Descriptor& descriptor, std::int64_t, std::string_view) {
    descriptors.push_back(&descriptor);
  });
  ASSERT_EQ(descriptors.size(), 3U);
  EXPECT_EQ(descriptors[0], descriptors[1]);
  EXPECT_NE(descriptors[1], descriptors[2]);
  EXPECT_STREQ(descriptors[0]->source, "Test/First");
  EXPECT_EQ(descriptors[0]->level, 5);
  EXPECT_EQ(descriptors[0]->line + 2, descriptors[2]->line);
}

TEST_F(DualogTest, FastTrace_HandlesThatComeLaterTakePart) {
  Dualog::fastTraceIs(true);
  static Dualog::Handle later("DualogTestLater", "Test/Later");
  EXPECT_TRUE(later.messageEnabled(9));
  EXPECT_FALSE(later.enabled(0));
  Dualog::fastTraceIs(false);
  EXPECT_FALSE(later.messageEnabled(0));
  EXPECT_EQ(Dualog::handle("DualogTestLater"), &later);
}

/// Traces while it is put into a line.
struct Chatty {
  int depth;
  void appendTo(std::string& out) const {
    if (depth > 0) DUALOG_TRACE(first, 8, "in ", Chatty{depth - 1}, " ", depth);
    out += "chatty" + std::to_string(depth);
  }
};

TEST_F(DualogTest, ATraceWithinAnArgumentsStringForm_DisturbsNoLine) {
  first.levelIs(8);
  for (int round = 0; round != 2; ++round) {
    DUALOG_TRACE(first, 8, "out ", Chatty{2}, " end");
    DUALOG_MESSAGE(first, "Test/First", 5, "void f()", "<%s|%s>", Chatty{1}, Chatty{0});
  }
  const std::vector<std::string> once{"in chatty0 1", "in chatty1 2", "out chatty2 end",
                                      "in chatty0 1", "void f(): <chatty1|chatty0>"};
  std::vector<std::string> twice(once);
  twice.insert(twice.end(), once.begin(), once.end());
  EXPECT_EQ(capture_.texts, twice);
}

/// Traces each line that it takes.
class Echo : public Dualog::Sink {
 public:
  void line(const Dualog::Line& line) override {
    taken.emplace_back(line.text);
    if (taken.size() < 3) DUALOG_TRACE(first, 8, "echo of ", line.text);
    EXPECT_EQ(line.text.substr(line.text.size() - 4), "text");
  }
  std::vector<std::string> taken;
};

TEST_F(DualogTest, ATraceWithinTheSink_DisturbsNoLine) {
  first.levelIs(8);
  Echo echo;
  Dualog::sinkIs(&echo);
  DUALOG_TRACE(first, 8, "text");
  EXPECT_EQ(Dualog::sinkIs(&capture_), &echo);
  EXPECT_THAT(echo.taken, ElementsAre("text", "echo of text", "echo of echo of text"));
}

TEST_F(DualogTest, SinkIs_NullPutsTheDefaultBackWhichWritesToStandardError) {
  first.levelIs(8);
  EXPECT_EQ(Dualog::sinkIs(nullptr), &capture_);
  testing::internal::CaptureStderr();
  const unsigned line = __LINE__ + 1;
  DUALOG_TRACE(first, 2, "to whom it may concern");
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ(Dualog::sinkIs(&capture_), nullptr);
  EXPECT_EQ(written, "12.500000 DualogTestFirst 2 Test/First:" + std::to_string(line) +
                         " TestBody to whom it may concern\n");
  EXPECT_THAT(capture_.texts, IsEmpty());
}

TEST_F(DualogTest, Statement_IsOneStatement) {
  first.levelIs(8);
  if (capture_.texts.empty())
    DUALOG_TRACE(first, 8, "then");
  else
    DUALOG_TRACE(first, 8, "else");
  EXPECT_THAT(capture_.texts, ElementsAre("then"));
}

}  // namespace
