#include "cycle/StartPosition.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <ostream>

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
        testing::internal::CaptureStdout();
        const bool found = instrument.cycle.doFindStartPosition(speed);
        std::cout.flush();
        console = testing::internal::GetCapturedStdout();
        took = board.Now() - begin;
        return found;
    }

    std::int64_t Shaft() { return board.Model().shaft.StepsTurned(board.Now()); }

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
    EXPECT_EQ(Shaft(), kTrailingEdge);
    EXPECT_EQ(took, Microseconds(kTrailingEdge * 625));
    EXPECT_TRUE(board.Line("B18").level) << "off the flag";
    ExpectBrakedAndReleased();
}

TEST_F(StartPosition, IsFoundAgainAfterExactlyOneTurn) {
    Search(360);
    EXPECT_TRUE(Search(360));
    EXPECT_EQ(Shaft(), kTrailingEdge + kTurn);
    EXPECT_EQ(took, Milliseconds(1000));
    EXPECT_TRUE(Search(200));
    EXPECT_EQ(Shaft(), kTrailingEdge + 2 * kTurn);
    EXPECT_EQ(took, Milliseconds(1800));
}

TEST_F(StartPosition, IsSoughtWithTheseWritesInThisOrder) {
    Search(360);
    EXPECT_EQ(
        Writes(board),
        (Texts{// the sensor
               "gpio/export 50", "B18/direction in", "B18/edge none", "B18/direction in",
               "B18/edge both",
               // the pump starts with its full current
               "A4/value 1", "A5/value 1", "A6/value 1", "A2/value 0", "pwm1/duty_cycle 0 EINVAL",
               "pwm1/period 625000", "pwm1/duty_cycle 312500", "pwm1/enable 1",
               // it stops and is braked
               "pwm1/enable 0", "A2/value 1", "A4/value 0", "A5/value 0", "A6/value 0",
               "A2/value 0",
               // the sensor goes
               "gpio/unexport 50"}));
}

TEST_F(StartPosition, IsCheckedOnceMoreAfterBraking) {
    Search(360);
    const Texts happenings = Happenings(board);
    ASSERT_GE(happenings.size(), 3U);
    EXPECT_EQ(Texts(happenings.end() - 3, happenings.end()),
              (Texts{"thread 1: write A2/value \"0\"", "thread 1: read B18/value \"1\\n\"",
                     "thread 1: write gpio/unexport \"50\""}));
}

TEST_F(StartPosition, LeavesThePumpFreeForTheNextMove) {
    Search(360);
    EXPECT_TRUE(instrument.cycle.ReagentPump()->MoveAngle(360.0F, 50.0F, 1000, false));
}

TEST_F(StartPosition, IsNotFoundWithoutPump) {
    EXPECT_FALSE(doFindStartPosition(nullptr, 360));
    EXPECT_EQ(Writes(board), (Texts{"gpio/export 50", "B18/direction in", "B18/edge none",
                                    "B18/direction in", "B18/edge both", "gpio/unexport 50"}));
    EXPECT_EQ(board.Now(), 0);
}

// The pulses' period in ns, computed in single precision: 1e9 / (speed / 0.225).
struct Pulse {
    std::uint32_t speed;
    const char* period;
    const char* duty;
};

void PrintTo(const Pulse& pulse, std::ostream* out) {
    *out << pulse.speed << " degrees per second";
}

class SearchPulse : public StartPosition, public testing::WithParamInterface<Pulse> {};

TEST_P(SearchPulse, FollowsTheSpeedUpTo1600Hertz) {
    board.SetInput("B18", false); // ends the search at once
    EXPECT_FALSE(Search(GetParam().speed));
    EXPECT_EQ(board.WritesTo("pwm1"),
              (Texts{"duty_cycle 0 EINVAL", std::string("period ") + GetParam().period,
                     std::string("duty_cycle ") + GetParam().duty, "enable 1", "enable 0"}));
}

INSTANTIATE_TEST_SUITE_P(
    Speeds, SearchPulse,
    testing::Values(Pulse{1, "224999984", "112499992"}, Pulse{100, "2250000", "1125000"},
                    Pulse{200, "1125000", "562500"}, Pulse{359, "626740", "313370"}, // 1595.6 Hz
                    Pulse{360, "625000", "312500"},                                  // 1600 Hz
                    Pulse{361, "625000", "312500"},        // 1604.4 Hz would be above 1601
                    Pulse{4294967295, "625000", "312500"}) // any other too
);

class OnFlag : public StartPosition {
  protected:
    OnFlag() : StartPosition(StartingOnFlag()) {}

    static Scenario StartingOnFlag() {
        Scenario scenario;
        scenario.board.pump.onFlag = true;
        return scenario;
    }
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

class WithoutFlag : public StartPosition {
  protected:
    WithoutFlag() : StartPosition(FlagNeverSeen()) {}

    static Scenario FlagNeverSeen() {
        Scenario scenario;
        scenario.board.pump.flagSeen = false;
        return scenario;
    }
};

TEST_F(WithoutFlag, TheSearchFailsAfterTwoSeconds) {
    board.Model().At(Milliseconds(2000), [] {}); // something that the sensor is read at
    EXPECT_FALSE(Search(360));
    EXPECT_EQ(took, Milliseconds(2000));
    EXPECT_EQ(Shaft(), 3200);
    ExpectBrakedAndReleased();
}

// 444 Hz need 2.7 s to the flag.
TEST_F(StartPosition, IsNotFoundByASlowPumpFarFromTheFlag) {
    board.Model().At(Milliseconds(2000), [] {});
    EXPECT_FALSE(Search(100));
    EXPECT_EQ(took, Milliseconds(2000));
    EXPECT_LT(Shaft(), kLeadingEdge);
    ExpectBrakedAndReleased();
}

TEST_F(StartPosition, IsFoundByASlowPumpNearTheFlag) {
    instrument.cycle.ReagentPump()->MoveAngle(180.0F, 50.0F, 1000, false);
    EXPECT_TRUE(Search(100));
    EXPECT_EQ(took, Microseconds((kTrailingEdge - 800) * 2250));
    EXPECT_EQ(Shaft(), kTrailingEdge);
}

// The pump is at rest at speed 0, and says so; the flag does not come.
TEST_F(StartPosition, IsNotFoundAtRest) {
    board.Model().At(Milliseconds(2000), [] {});
    EXPECT_FALSE(Search(0));
    EXPECT_EQ(took, Milliseconds(2000));
    EXPECT_EQ(Shaft(), 0);
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
    EXPECT_EQ(Shaft(), 0);
    EXPECT_EQ(console, "StepperDriverMotor: Start operation failed\n");
}

} // namespace
} // namespace tavrelin
