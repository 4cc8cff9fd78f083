// The instrument is killed, made safe, and started again, as the service unit does it.

#include "tests/support/InstrumentRun.h"
#include "tests/support/Text.h"
#include "tests/system/LogFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavrelin {
namespace {

RunResult SafeState(const std::string& left) {
    return RunInstrument(
        {.program = "tavrelin-service", .arguments = {"safe-state"}, .left = left});
}

// Nothing exported, no channel on, no driver chip enabled: what a channel's line ends with is
// whether it is on.
void ExpectSafe(const std::string& left) {
    EXPECT_THAT(left, testing::Not(testing::HasSubstr(" exported ")));
    EXPECT_THAT(left, testing::Not(testing::ContainsRegex("channel . [^\n]* 1\n")));
    EXPECT_THAT(left, testing::Not(testing::ContainsRegex("line (A2|B15) [a-z]+ low")));
}

void ExpectAMeasurementWithoutComplaint(const std::string& left) {
    const RunResult run = RunInstrument({.measurements = 1, .left = left});
    EXPECT_EQ(run.status, kEndedAsAsked);
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(ResultLines(run.Log()),
                testing::ElementsAre(testing::EndsWith(",,,0.25,428.705,20000,3e+06,1.69578e+06")));
}

// The limit ends the process where it is, as a kill does; its lines and channels stay.
void ExpectToRecoverFrom(const Conditions& killed) {
    const std::string left = RunInstrument(killed).left;
    const RunResult safe = SafeState(left);
    EXPECT_EQ(safe.status, kEndedAsAsked);
    EXPECT_EQ(safe.errors, "");
    ExpectSafe(safe.left);
    ExpectAMeasurementWithoutComplaint(safe.left);
}

constexpr int kCallsOfStartUp = 825; // rounded up to where step 1 has begun

// Calls of a run that ends with this step; the summary has a line for each kind.
int CallsUpToTheEndOf(int step) {
    const std::string summary = RunInstrument({.steps = step}).summary;
    const std::size_t begin = summary.find("[calls]");
    int sum = 0;
    for (const std::string& line :
         LinesWith(summary.substr(begin, summary.find("\n[", begin) - begin), " = ")) {
        sum += std::stoi(line.substr(line.find(" = ") + 3));
    }
    return sum;
}

class KilledInStep : public testing::TestWithParam<int> {};

TEST_P(KilledInStep, IsMadeSafeAndMeasuresAgain) {
    const int step = GetParam();
    const int begin = step == 1 ? kCallsOfStartUp : CallsUpToTheEndOf(step - 1);
    const Conditions inTheMiddle = {.calls = (begin + CallsUpToTheEndOf(step)) / 2};
    EXPECT_EQ(LinesWith(RunInstrument(inTheMiddle).console, "main.cpp, 889: ").size(),
              static_cast<std::size_t>(step));
    ExpectToRecoverFrom(inTheMiddle);
    ExpectToRecoverFrom({.steps = step}); // and at its end
}

INSTANTIATE_TEST_SUITE_P(, KilledInStep, testing::Range(1, 18));

class KilledAtCall : public testing::TestWithParam<int> {};

TEST_P(KilledAtCall, IsMadeSafeAndMeasuresAgain) {
    ExpectToRecoverFrom({.calls = GetParam()});
}

INSTANTIATE_TEST_SUITE_P(OfStartUp, KilledAtCall, testing::Range(25, kCallsOfStartUp + 25, 25));

TEST(KilledAtCall, GoesThroughTheWholeStartUp) {
    const auto console = [](int calls) { return RunInstrument({.calls = calls}).console; };
    EXPECT_EQ(console(25), "");
    EXPECT_THAT(console(kCallsOfStartUp), testing::HasSubstr("\n,Verify Flag"));
}

// Without it the next start meets what the killed one left, says so and skips the light's set-up.
TEST(KilledInstrument, ComplainsAtItsNextStartUnlessItWasMadeSafe) {
    const std::string left = RunInstrument({.steps = 4}).left;
    const RunResult run = RunInstrument({.measurements = 1, .left = left});
    EXPECT_THAT(run.errors, testing::StartsWith("already used\nalready used\n"));
    EXPECT_THAT(LinesWith(run.events, "pwm0/period"), testing::IsEmpty());
}

TEST(ChannelsLeftExported, GiveTheLightThatTheyWereSetUpFor) {
    for (const char* left : {"exported = [0]", "exported = [0, 1, 2, 3]\nenabled = [0, 1, 2, 3]"}) {
        SCOPED_TRACE(left);
        const RunResult run =
            RunInstrument({.board = std::string("[channels]\n") + left + "\n", .measurements = 1});
        EXPECT_THAT(run.errors, testing::StartsWith("already used\n"));
        EXPECT_THAT(LinesWith(run.events, "pwm0/period"), testing::IsEmpty());
        EXPECT_THAT(ResultLines(run.Log()), testing::ElementsAre(testing::EndsWith(
                                                ",,,0.25,428.705,20000,3e+06,1.69578e+06")));
    }
}

// A safe state that is killed itself has lost nothing: the next one goes on.
TEST(KilledSafeState, IsCompletedByTheNext) {
    const std::string left = RunInstrument({.steps = 4}).left;
    bool whole = false;
    for (int calls = 1; !whole; calls += 7) {
        const RunResult cut = RunInstrument({.program = "tavrelin-service",
                                             .arguments = {"safe-state"},
                                             .calls = calls,
                                             .left = left});
        const RunResult completed = SafeState(cut.left);
        EXPECT_EQ(completed.status, kEndedAsAsked);
        ExpectSafe(completed.left);
        whole = cut.summary.find("limit reached") == std::string::npos;
    }
}

} // namespace
} // namespace tavrelin
