#include "cycle/HomeSensor.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kDirection = "/sys/class/gpio/pioB18/direction";
constexpr const char* kValue = "/sys/class/gpio/pioB18/value";

TEST(HomeSensor, ClaimsItsLineAsInputWithBothEdges) {
    SimulatedBoard board;
    const HomeSensor sensor;
    EXPECT_EQ(Writes(board), (Texts{"gpio/export 50", "B18/direction in", "B18/edge none",
                                    "B18/direction in", "B18/edge both"}));
}

TEST(HomeSensor, SeesTheFlagAtALowLevel) {
    SimulatedBoard board;
    board.SetInput("B18", false);
    HomeSensor sensor;
    EXPECT_TRUE(sensor.IsStopPosition());
    EXPECT_FALSE(sensor.IsLevelHigh());
}

TEST(HomeSensor, SeesNoFlagAtAHighLevel) {
    SimulatedBoard board;
    board.SetInput("B18", true);
    HomeSensor sensor;
    EXPECT_FALSE(sensor.IsStopPosition());
    EXPECT_TRUE(sensor.IsLevelHigh());
}

TEST(HomeSensor, AnswersNeitherWhenItsLineCannotBeHad) {
    SimulatedBoard board;
    board.TakeAway("/sys/class/gpio/export");
    testing::internal::CaptureStderr();
    {
        HomeSensor sensor;
        EXPECT_FALSE(sensor.IsStopPosition());
        EXPECT_FALSE(sensor.IsLevelHigh());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "unable to lock a gpio" // claiming it
                                                      "not locked yet\n"      // its mode
                                                      "not locked yet\n"      // first reading
                                                      "not locked yet\n"      // second reading
                                                      "not used yet\n");      // releasing it
}

TEST(HomeSensor, TakesALevelThatCannotBeReadForTheFlag) {
    SimulatedBoard board;
    board.SetInput("B18", true);
    HomeSensor sensor;
    board.FailForever("open", kValue, EACCES);
    EXPECT_TRUE(sensor.IsStopPosition());
    EXPECT_FALSE(sensor.IsLevelHigh());
}

TEST(HomeSensor, SetsNoEdgeWhenItsModeCannotBeSet) {
    SimulatedBoard board;
    board.Fail("open", kDirection, EACCES, 2); // the first is the line's own beginning
    testing::internal::CaptureStderr();
    const HomeSensor sensor;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "unable to set the gpio mode");
    EXPECT_EQ(Writes(board), (Texts{"gpio/export 50", "B18/direction in", "B18/edge none"}));
}

TEST(HomeSensor, ReleasesItsLine) {
    SimulatedBoard board;
    { const HomeSensor sensor; }
    EXPECT_FALSE(board.Line("B18").exported);
    EXPECT_EQ(Writes(board).back(), "gpio/unexport 50");
}

} // namespace
} // namespace tavrelin
