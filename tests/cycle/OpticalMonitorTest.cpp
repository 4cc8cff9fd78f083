#include "cycle/OpticalMonitor.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;
using sim::WorldEvent;

/// Samples by itself, on the thread of the test, in a step of this duration.
class Monitor {
  public:
    explicit Monitor(const Scenario& scenario = {}) : instrument(scenario) {}

    bool Run(std::uint32_t duration) {
        StepRequest request;
        request.Duration = duration;
        request.Description = "Mixing";
        request.samples = &samples;
        request.externalAdc = instrument.cycle.ExternalAdc();
        return MonitorOptics(&request);
    }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
    std::vector<float> samples;
};

struct Sampling {
    std::uint32_t duration; ///< ms
    int readings;
};

void PrintTo(const Sampling& sampling, std::ostream* out) {
    *out << sampling.duration << " ms";
}

class MonitorFor : public testing::TestWithParam<Sampling> {};

TEST_P(MonitorFor, ReadsEvery250MillisecondsUntilLessThan100AreLeft) {
    Monitor monitor;
    EXPECT_TRUE(monitor.Run(GetParam().duration));
    EXPECT_EQ(monitor.samples.size(), static_cast<std::size_t>(GetParam().readings));
    EXPECT_EQ(monitor.board.Now(), Milliseconds(250) * GetParam().readings);
    EXPECT_EQ(CountOf(monitor.board, "write spi a080"), GetParam().readings);
}

// 100 short of the duration is not yet the end.
INSTANTIATE_TEST_SUITE_P(Durations, MonitorFor,
                         testing::Values(Sampling{0, 1}, Sampling{100, 1}, Sampling{349, 1},
                                         Sampling{350, 2}, Sampling{599, 2}, Sampling{600, 3},
                                         Sampling{849, 3}, Sampling{850, 4}, Sampling{1000, 4},
                                         Sampling{1099, 4}, Sampling{1100, 5},
                                         Sampling{60000, 240}));

TEST(OpticalMonitor, DoesNothingWithoutRequestOrConverter) {
    SimulatedBoard board;
    StepRequest request;
    std::vector<float> samples;
    request.Duration = 1000;
    request.samples = &samples;
    EXPECT_FALSE(MonitorOptics(nullptr));
    EXPECT_FALSE(MonitorOptics(&request));
    EXPECT_EQ(samples, std::vector<float>{});
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Now(), 0);
}

TEST(OpticalMonitor, AddsEveryReadingToTheSamplesInItsOrder) {
    Scenario scenario;
    scenario.board.converterWords = WordsFor({8, 6, -7, 4});
    Monitor monitor(scenario);
    monitor.samples = {5.0F};
    monitor.Run(1000);
    EXPECT_EQ(monitor.samples, (std::vector<float>{5.0F, 8.0F, 6.0F, -7.0F, 4.0F}));
}

TEST(OpticalMonitor, AddsTheLastReadingAgainWhenThereIsNoNewOne) {
    Scenario scenario;
    scenario.board.converterWords = {WordsFor({8})[0], kNothingNew, WordsFor({-9})[0], kNothingNew};
    Monitor monitor(scenario);
    monitor.Run(1000);
    EXPECT_EQ(monitor.samples, (std::vector<float>{8.0F, 8.0F, -9.0F, -9.0F}));
    EXPECT_EQ(monitor.instrument.Log(), "2026-03-07 09:0:0,       8,Mixing,,\n"
                                        "2026-03-07 09:0:0,       8,Mixing,,\n"
                                        "2026-03-07 09:0:0,      -9,Mixing,,\n"
                                        "2026-03-07 09:0:1,      -9,Mixing,,\n");
}

TEST(OpticalMonitor, SamplesAnHourMoreWhenTheClockIsSetBackByAnHour) {
    Scenario scenario;
    scenario.board.events = {
        {.at = Milliseconds(600), .kind = WorldEvent::Kind::JumpClock, .value = -3600}};
    Monitor monitor(scenario);
    EXPECT_TRUE(monitor.Run(1000));
    EXPECT_EQ(monitor.samples.size(), 4U + 3600 * 4);
    EXPECT_EQ(monitor.board.Now(), sim::Seconds(3601));
    const std::string log = monitor.instrument.Log();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 4 + 3600 * 4);
    EXPECT_NE(log.find("2026-03-07 08:0:0,"), std::string::npos);
}

TEST(OpticalMonitor, EndsAtOnceWhenTheClockIsSetForward) {
    Scenario scenario;
    scenario.board.events = {
        {.at = Milliseconds(600), .kind = WorldEvent::Kind::JumpClock, .value = 3600}};
    Monitor monitor(scenario);
    EXPECT_TRUE(monitor.Run(60000));
    EXPECT_EQ(monitor.samples.size(), 3U);
    EXPECT_EQ(monitor.board.Now(), Milliseconds(750));
}

TEST(OpticalMonitor, ReadsOnUntilAMissingCardIsThere) {
    Scenario scenario;
    scenario.board.card.present = false;
    scenario.board.events = {{.at = Milliseconds(2100), .kind = WorldEvent::Kind::InsertCard}};
    Monitor monitor(scenario);
    EXPECT_TRUE(monitor.Run(0));
    EXPECT_EQ(monitor.samples.size(), 9U);
    EXPECT_EQ(monitor.board.Now(), Milliseconds(2250)) << "the first reading after 2100 ms";
    EXPECT_EQ(CountOf(monitor.board, "open card/"), 1);
    const std::string log = monitor.instrument.Log();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 9) << "none is lost";
    EXPECT_EQ(monitor.board.FileBelowMountPoint("2026-03-07_logfile.csv"), "");
}

TEST(OpticalMonitor, ReadsOnWhileACardThatWasPulledIsAway) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    scenario.board.events = {{.at = Milliseconds(100), .kind = WorldEvent::Kind::RemoveCard},
                             {.at = Milliseconds(5100), .kind = WorldEvent::Kind::InsertCard}};
    Monitor monitor(scenario);
    EXPECT_TRUE(monitor.Run(1000));
    EXPECT_EQ(monitor.board.Now(), Milliseconds(5250));
    EXPECT_EQ(CountOf(monitor.board, "umount"), 1);
    EXPECT_EQ(CountOf(monitor.board, ": mount"), 1);
    const std::string log = monitor.instrument.Log();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 21);
}

TEST(OpticalMonitor, ReadsOnWhileTheLogCannotBeOpened) {
    Scenario scenario;
    scenario.board.card.mounted = true;
    Monitor monitor(scenario);
    const std::string log = "/mnt/sd-card/2026-03-07_logfile.csv";
    monitor.board.Fail("open", log, EACCES, 1);
    monitor.board.Fail("open", log, EMFILE, 2);
    EXPECT_TRUE(monitor.Run(0));
    EXPECT_EQ(monitor.samples.size(), 3U);
    EXPECT_EQ(monitor.instrument.Log(), "2026-03-07 09:0:0, 3000000,Mixing,,\n"
                                        "2026-03-07 09:0:0, 3000000,Mixing,,\n"
                                        "2026-03-07 09:0:0, 3000000,Mixing,,\n");
}

TEST(OpticalMonitor, MakesItsStepWaitForTheCard) {
    Scenario scenario;
    scenario.board.card.present = false;
    scenario.board.events = {{.at = sim::Seconds(60), .kind = WorldEvent::Kind::InsertCard}};
    Instrument instrument(scenario);
    const StepOutcome outcome = instrument.Run(
        {.duration = 1000, .sampling = true, .description = "Dark Count Measurement"});
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(outcome.boardTime, sim::Seconds(60));
    EXPECT_EQ(instrument.cycle.DarkCount(), 20000.0F);
}

} // namespace
} // namespace tavrelin
