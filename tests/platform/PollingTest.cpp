#include "platform/GpioPin.h"

#include "tests/support/BoardTest.h"

#include <ctime>

namespace tavrelin {
namespace {

constexpr int kFarTooManyReads = 100000;

std::time_t WallSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

// A wait as the instrument does it: looks at line and clock in turn, asks for no rest.
int ReadsInTwoSeconds(const GpioPin& pin) {
    const std::time_t begin = WallSeconds();
    int reads = 0;
    while (WallSeconds() - begin < 2 && reads < kFarTooManyReads) {
        static_cast<void>(pin.Read());
        ++reads;
    }
    return reads;
}

using PollingALine = BoardTest;

TEST_F(PollingALine, ComesToItsTimeLimitWhateverTheLineReads) {
    const GpioPin pin(1, 7);
    EXPECT_LT(ReadsInTwoSeconds(pin), kFarTooManyReads);
    for (const char* text : {"1", "", "rubbish"}) {
        board.ReplaceText("/sys/class/gpio/pioB7/value", text);
        EXPECT_LT(ReadsInTwoSeconds(pin), kFarTooManyReads) << text;
    }
    board.TakeAway("/sys/class/gpio/pioB7");
    EXPECT_LT(ReadsInTwoSeconds(pin), kFarTooManyReads);
}

TEST_F(PollingALine, SeesWhatHappensAtTheVeryStart) {
    sim::Scenario scenario;
    scenario.board.events = {
        {.at = 0, .kind = sim::WorldEvent::Kind::SetInput, .value = 1, .line = 39}};
    NewBoard(scenario);
    EXPECT_EQ(GpioPin(1, 7).Read(), kLevelHigh);
    EXPECT_EQ(board.Now(), 0);
}

} // namespace
} // namespace tavrelin
