#include "cycle/OpticalMonitor.h"

#include "tests/cycle/Instrument.h"
#include "tests/support/Text.h"

#include <cerrno>
#include <utility>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;
using sim::WorldEvent;
using testing::Contains;
using testing::StartsWith;

/// A step's duration in milliseconds, and the readings taken in it.
class MonitorFor : public testing::TestWithParam<std::pair<std::uint32_t, int>> {};

TEST_P(MonitorFor, ReadsEvery250MillisecondsUntilLessThan100AreLeft) {
    const auto [duration, readings] = GetParam();
    Instrument instrument;
    EXPECT_TRUE(instrument.Sample(duration));
    EXPECT_EQ(instrument.samples.size(), static_cast<std::size_t>(readings));
    EXPECT_EQ(instrument.board.Now(), Milliseconds(250) * readings);
    EXPECT_EQ(CountOf(instrument.board, "write spi a080"), readings);
}

// 100 short of the duration is not yet the end.
INSTANTIATE_TEST_SUITE_P(Durations, MonitorFor,
                         testing::Values(std::pair{0U, 1}, std::pair{100U, 1}, std::pair{349U, 1},
                                         std::pair{350U, 2}, std::pair{599U, 2}, std::pair{600U, 3},
                                         std::pair{849U, 3}, std::pair{850U, 4},
                                         std::pair{1000U, 4}, std::pair{1099U, 4},
                                         std::pair{1100U, 5}, std::pair{60000U, 240}));

TEST(OpticalMonitor, DoesNothingWithoutRequestOrConverter) {
    SimulatedBoard board;
    std::vector<float> samples;
    const StepRequest withoutConverter = {.state = {.Duration = 1000}, .samples = &samples};
    EXPECT_FALSE(MonitorOptics(nullptr));
    EXPECT_FALSE(MonitorOptics(&withoutConverter));
    EXPECT_EQ(samples, std::vector<float>{});
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Now(), 0);
}

TEST(OpticalMonitor, AddsEveryReadingToTheSamplesInItsOrder) {
    Instrument instrument(Answering({8, 6, -7, 4}));
    instrument.samples = {5.0F};
    instrument.Sample(1000);
    EXPECT_EQ(instrument.samples, (std::vector<float>{5.0F, 8.0F, 6.0F, -7.0F, 4.0F}));
}

TEST(OpticalMonitor, AddsTheLastReadingAgainWhenThereIsNoNewOne) {
    Instrument instrument(Where(&sim::BoardSetup::converterWords,
                                {WordsFor({8})[0], kNothingNew, WordsFor({-9})[0], kNothingNew}));
    instrument.Sample(1000);
    EXPECT_EQ(instrument.samples, (std::vector<float>{8.0F, 8.0F, -9.0F, -9.0F}));
    EXPECT_EQ(instrument.Log(), "2026-03-07 09:0:0,       8,Mixing,,\n"
                                "2026-03-07 09:0:0,       8,Mixing,,\n"
                                "2026-03-07 09:0:0,      -9,Mixing,,\n"
                                "2026-03-07 09:0:1,      -9,Mixing,,\n");
}

Scenario ClockSetAt600Milliseconds(std::int64_t seconds) {
    return Where(
        &sim::BoardSetup::events,
        {{.at = Milliseconds(600), .kind = WorldEvent::Kind::JumpClock, .value = seconds}});
}

TEST(OpticalMonitor, SamplesAnHourMoreWhenTheClockIsSetBackByAnHour) {
    Instrument instrument(ClockSetAt600Milliseconds(-3600));
    EXPECT_TRUE(instrument.Sample(1000));
    EXPECT_EQ(instrument.samples.size(), 4U + 3600 * 4);
    EXPECT_EQ(instrument.board.Now(), sim::Seconds(3601));
    EXPECT_EQ(LinesOf(instrument.Log()).size(), 4U + 3600 * 4);
    EXPECT_THAT(LinesOf(instrument.Log()), Contains(StartsWith("2026-03-07 08:0:0,")));
}

TEST(OpticalMonitor, EndsAtOnceWhenTheClockIsSetForward) {
    Instrument instrument(ClockSetAt600Milliseconds(3600));
    EXPECT_TRUE(instrument.Sample(60000));
    EXPECT_EQ(instrument.samples.size(), 3U);
    EXPECT_EQ(instrument.board.Now(), Milliseconds(750));
}

TEST(OpticalMonitor, ReadsOnUntilAMissingCardIsThere) {
    Scenario scenario;
    scenario.board.card.present = false;
    scenario.board.events = {{.at = Milliseconds(2100), .kind = WorldEvent::Kind::InsertCard}};
    Instrument instrument(scenario);
    EXPECT_TRUE(instrument.Sample(0));
    EXPECT_EQ(instrument.samples.size(), 9U);
    EXPECT_EQ(instrument.board.Now(), Milliseconds(2250)) << "the first reading after 2100 ms";
    EXPECT_EQ(CountOf(instrument.board, "open card/"), 1);
    EXPECT_EQ(LinesOf(instrument.Log()).size(), 9U) << "none is lost";
    EXPECT_EQ(instrument.board.FileBelowMountPoint("2026-03-07_logfile.csv"), "");
}

TEST(OpticalMonitor, ReadsOnWhileACardThatWasPulledIsAway) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    scenario.board.events = {{.at = Milliseconds(100), .kind = WorldEvent::Kind::RemoveCard},
                             {.at = Milliseconds(5100), .kind = WorldEvent::Kind::InsertCard}};
    Instrument instrument(scenario);
    EXPECT_TRUE(instrument.Sample(1000));
    EXPECT_EQ(instrument.board.Now(), Milliseconds(5250));
    EXPECT_EQ(CountOf(instrument.board, "umount"), 1);
    EXPECT_EQ(CountOf(instrument.board, ": mount"), 1);
    EXPECT_EQ(LinesOf(instrument.Log()).size(), 21U);
}

TEST(OpticalMonitor, ReadsOnWhileTheLogCannotBeOpened) {
    Instrument instrument(Where(&sim::BoardSetup::card, {.mounted = true}));
    const std::string log = "/mnt/sd-card/2026-03-07_logfile.csv";
    instrument.board.Fail("open", log, EACCES, 1);
    instrument.board.Fail("open", log, EMFILE, 2);
    EXPECT_TRUE(instrument.Sample(0));
    EXPECT_EQ(instrument.samples.size(), 3U);
    EXPECT_EQ(instrument.Log(), "2026-03-07 09:0:0, 3000000,Mixing,,\n"
                                "2026-03-07 09:0:0, 3000000,Mixing,,\n"
                                "2026-03-07 09:0:0, 3000000,Mixing,,\n");
}

TEST(OpticalMonitor, MakesItsStepWaitForTheCard) {
    Scenario scenario;
    scenario.board.card.present = false;
    scenario.board.events = {{.at = sim::Seconds(60), .kind = WorldEvent::Kind::InsertCard}};
    Instrument instrument(scenario);
    const StepOutcome outcome = instrument.Run(
        {.Duration = 1000, .ADCMonitorStatus = true, .Description = "Dark Count Measurement"});
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.boardTime, sim::Seconds(60));
    EXPECT_EQ(instrument.cycle.DarkCount(), 20000.0F);
}

} // namespace
} // namespace tavrelin
