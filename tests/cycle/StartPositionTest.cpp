#include "cycle/StartPosition.h"

#include "tests/cycle/Instrument.h"

#include <tuple>

namespace tavrelin {
namespace {

using sim::Microseconds;
using sim::Milliseconds;
using sim::Nanoseconds;
using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

// The pump model turns 1600 steps a turn; its flag is in the sensor from step 1200 to step 1266.
constexpr std::int64_t kLeadingEdge = 1200;
constexpr std::int64_t kTrailingEdge = 1267;
constexpr std::int64_t kTurn = 1600;

/// A search with the pump model really turning.
class StartPosition : public testing::Test {
  protected:
    explicit StartPosition(const Scenario& scenario = {}) : instrument(scenario) {}

    bool Search(std::uint32_t speed) {
        board.Forget();
        const Nanoseconds begin = board.Now();
        bool found = false;
        console = ConsoleOf([&] { found = instrument.cycle.doFindStartPosition(speed); });
        took = board.Now() - begin;
        return found;
    }

    void ExpectBrakedAndReleased() {
        EXPECT_FALSE(board.Channel(1).enabled);
        EXPECT_FALSE(board.Line("A4").level || board.Line("A5").level || board.Line("A6").level);
        EXPECT_FALSE(board.Line("A2").level) << "low: the chip holds the rotor";
        EXPECT_FALSE(board.Line("B18").exported);
        EXPECT_EQ(console, "");
    }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
    std::string console;
    Nanoseconds took = 0;
};

TEST_F(StartPosition, IsTheTrailingEdgeOfTheFlag) {
    EXPECT_TRUE(Search(360));
    EXPECT_EQ(instrument.StepsTurned(), kTrailingEdge);
    EXPECT_EQ(took, Microseconds(kTrailingEdge * 625));
    EXPECT_TRUE(board.Line("B18").level) << "off the flag";
    ExpectBrakedAndReleased();
}

TEST_F(StartPosition, IsFoundAgainAfterExactlyOneTurn) {
    Search(360);
    EXPECT_TRUE(Search(360));
    EXPECT_EQ(instrument.StepsTurned(), kTrailingEdge + kTurn);
    EXPECT_EQ(took, Milliseconds(1000));
    EXPECT_TRUE(Search(200));
    EXPECT_EQ(instrument.StepsTurned(), kTrailingEdge + 2 * kTurn);
    EXPECT_EQ(took, Milliseconds(1800));
}

TEST_F(StartPosition, IsSoughtWithTheseWritesInThisOrder) {
    Search(360);
    EXPECT_EQ(
        Writes(board),
        (Texts{// the sensor
               "gpio export 50", "B18 direction in", "B18 edge none", "B18 direction in",
               "B18 edge both",
               // the pump starts with its full current
               "A4 value 1", "A5 value 1", "A6 value 1", "A2 value 0", "pwm1 duty_cycle 0 EINVAL",
               "pwm1 period 625000", "pwm1 duty_cycle 312500", "pwm1 enable 1",
               // it stops and is braked
               "pwm1 enable 0", "A2 value 1", "A4 value 0", "A5 value 0", "A6 value 0",
               "A2 value 0",
               // the sensor goes
               "gpio unexport 50"}));
}

TEST_F(StartPosition, IsCheckedOnceMoreAfterBraking) {
    Search(360);
    Texts end = Happenings(board);
    end.erase(end.begin(), end.end() - 3);
    EXPECT_EQ(end, (Texts{"thread 1: write A2/value \"0\"", "thread 1: read B18/value \"1\\n\"",
                          "thread 1: write gpio/unexport \"50\""}));
}

TEST_F(StartPosition, LeavesThePumpFreeForTheNextMove) {
    Search(360);
    EXPECT_TRUE(instrument.cycle.ReagentPump()->MoveAngle(360.0F, 50.0F, 1000, false));
}

TEST_F(StartPosition, IsNotFoundWithoutPump) {
    EXPECT_FALSE(doFindStartPosition(nullptr, 360));
    EXPECT_EQ(Writes(board), (Texts{"gpio export 50", "B18 direction in", "B18 edge none",
                                    "B18 direction in", "B18 edge both", "gpio unexport 50"}));
    EXPECT_EQ(board.Now(), 0);
}

/// Degrees per second, and the pulses' period and high time in ns, computed in single precision:
/// 1e9 / (speed / 0.225).
using Pulse = std::tuple<std::uint32_t, const char*, const char*>;

class SearchPulse : public StartPosition, public testing::WithParamInterface<Pulse> {};

TEST_P(SearchPulse, FollowsTheSpeedUpTo1600Hertz) {
    const auto [speed, period, high] = GetParam();
    board.SetInput("B18", false); // ends the search at once
    EXPECT_FALSE(Search(speed));
    EXPECT_EQ(board.WritesTo("pwm1"),
              (Texts{"duty_cycle 0 EINVAL", std::string("period ") + period,
                     std::string("duty_cycle ") + high, "enable 1", "enable 0"}));
}

INSTANTIATE_TEST_SUITE_P(
    Speeds, SearchPulse,
    testing::Values(Pulse{1, "224999984", "112499992"}, Pulse{5, "44999996", "22499998"},
                    Pulse{100, "2250000", "1125000"}, Pulse{200, "1125000", "562500"},
                    Pulse{359, "626740", "313370"},        // 1595.6 Hz
                    Pulse{360, "625000", "312500"},        // 1600 Hz
                    Pulse{361, "625000", "312500"},        // 1604.4 Hz would be above 1601
                    Pulse{4294967295, "625000", "312500"}) // any other too
);

struct OnFlag : StartPosition {
    OnFlag() : StartPosition(Where(&sim::BoardSetup::pump, {.onFlag = true})) {}
};

TEST_F(OnFlag, ThePumpDoesNotKnowWhereItStandsAndFails) {
    EXPECT_FALSE(Search(360));
    EXPECT_EQ(took, 0);
    EXPECT_EQ(CountOf(board, "read B18/value"), 1);
    ExpectBrakedAndReleased();
}

TEST_F(OnFlag, ThePumpFindsItsStartAfterItLeftTheFlag) {
    instrument.cycle.ReagentPump()->MoveAngle(90.0F, 50.0F, 1000, false);
    EXPECT_TRUE(Search(360));
}

// 444 Hz need 2.7 s to the flag.
TEST_F(StartPosition, IsNotFoundByASlowPumpFarFromTheFlag) {
    board.Model().At(Milliseconds(2000), [] {});
    EXPECT_FALSE(Search(100));
    EXPECT_EQ(took, Milliseconds(2000));
    EXPECT_LT(instrument.StepsTurned(), kLeadingEdge);
    ExpectBrakedAndReleased();
}

TEST_F(StartPosition, IsFoundByASlowPumpNearTheFlag) {
    instrument.cycle.ReagentPump()->MoveAngle(180.0F, 50.0F, 1000, false);
    EXPECT_TRUE(Search(100));
    EXPECT_EQ(took, Microseconds((kTrailingEdge - 800) * 2250));
    EXPECT_EQ(instrument.StepsTurned(), kTrailingEdge);
}

// The pump is at rest at speed 0, and says so; the flag does not come.
TEST_F(StartPosition, IsNotFoundAtRest) {
    board.Model().At(Milliseconds(2000), [] {});
    EXPECT_FALSE(Search(0));
    EXPECT_EQ(took, Milliseconds(2000));
    EXPECT_EQ(instrument.StepsTurned(), 0);
    EXPECT_EQ(console, "Invalid PWM frequency or duty cycle in StepperDriver::Start\n"
                       "StepperDriverMotor: Start operation failed\n");
}

// Whether the pump started is not looked at: the sensor tells.
TEST_F(StartPosition, IsSoughtEvenWhenThePumpDidNotStart) {
    board.Fail("pthread_mutex_lock", "", EINVAL); // the motor's
    board.Model().At(Milliseconds(100), [&] { board.SetInput("B18", false); });
    board.Model().At(Milliseconds(200), [&] { board.SetInput("B18", true); });
    EXPECT_TRUE(Search(360));
    EXPECT_EQ(took, Milliseconds(200));
    EXPECT_EQ(instrument.StepsTurned(), 0);
    EXPECT_EQ(console, "StepperDriverMotor: Start operation failed\n");
}

} // namespace
} // namespace tavrelin
