#include "cycle/HomeSensor.h"

#include "tests/cycle/Instrument.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kDirection = "/sys/class/gpio/pioB18/direction";
constexpr const char* kValue = "/sys/class/gpio/pioB18/value";

TEST(HomeSensor, ClaimsItsLineAsInputWithBothEdgesAndReleasesIt) {
    SimulatedBoard board;
    { const HomeSensor sensor; }
    EXPECT_EQ(Writes(board), (Texts{"gpio export 50", "B18 direction in", "B18 edge none",
                                    "B18 direction in", "B18 edge both", "gpio unexport 50"}));
}

TEST(HomeSensor, SeesTheFlagAtALowLevelAndNoneAtAHighOne) {
    SimulatedBoard board;
    HomeSensor sensor;
    for (const bool level : {false, true}) {
        board.SetInput("B18", level);
        EXPECT_EQ(sensor.IsStopPosition(), !level);
        EXPECT_EQ(sensor.IsLevelHigh(), level);
    }
}

TEST(HomeSensor, AnswersNeitherWhenItsLineCannotBeHad) {
    SimulatedBoard board;
    board.TakeAway("/sys/class/gpio/export");
    CapturedConsole console;
    {
        HomeSensor sensor;
        EXPECT_FALSE(sensor.IsStopPosition());
        EXPECT_FALSE(sensor.IsLevelHigh());
    }
    EXPECT_EQ(console.Error(), "unable to lock a gpio" // claiming it
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
    CapturedConsole console;
    const HomeSensor sensor;
    EXPECT_EQ(console.Error(), "unable to set the gpio mode");
    EXPECT_EQ(Writes(board), (Texts{"gpio export 50", "B18 direction in", "B18 edge none"}));
}

} // namespace
} // namespace tavrelin
