#include "platform/GpioPin.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/CapturedConsole.h"

#include <gtest/gtest.h>

#include <ctime>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;

constexpr int kFarTooManyReads = 100000;

std::time_t WallSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

// A wait as the instrument does it: looks at line and clock in turn, asks for no rest.
int ReadsInTwoSeconds(GpioPin& pin) {
    const std::time_t begin = WallSeconds();
    int reads = 0;
    while (WallSeconds() - begin < 2 && reads < kFarTooManyReads) {
        static_cast<void>(pin.Read());
        ++reads;
    }
    return reads;
}

TEST(PollingALine, ComesToItsTimeLimitOnALineThatStays) {
    SimulatedBoard board;
    GpioPin pin(1, 7);
    EXPECT_LT(ReadsInTwoSeconds(pin), kFarTooManyReads);
}

TEST(PollingALine, ComesToItsTimeLimitWhenTheLineIsTakenAway) {
    SimulatedBoard board;
    CapturedConsole console;
    GpioPin pin(1, 7);
    board.TakeAway("/sys/class/gpio/pioB7");
    EXPECT_LT(ReadsInTwoSeconds(pin), kFarTooManyReads);
}

TEST(PollingALine, ComesToItsTimeLimitWhenTheValueReadsOtherwise) {
    for (const char* text : {"1", "", "rubbish"}) {
        SimulatedBoard board;
        GpioPin pin(1, 7);
        board.ReplaceText("/sys/class/gpio/pioB7/value", text);
        EXPECT_LT(ReadsInTwoSeconds(pin), kFarTooManyReads) << text;
    }
}

TEST(PollingALine, SeesWhatHappensAtTheVeryStart) {
    sim::Scenario scenario;
    scenario.board.events = {
        {.at = 0, .kind = sim::WorldEvent::Kind::SetInput, .value = 1, .line = 39}};
    SimulatedBoard board(scenario);
    GpioPin pin(1, 7);
    EXPECT_EQ(pin.Read(), kLevelHigh);
    EXPECT_EQ(board.Now(), 0);
}

} // namespace
} // namespace tavrelin
