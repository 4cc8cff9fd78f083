#include "cycle/MeasurementCycle.h"

#include "tests/cycle/Instrument.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

class Prime : public testing::Test {
  protected:
    Prime() {
        cycle.Init();
        board.Forget();
    }

    bool RunPrime() {
        CapturedConsole captured;
        const bool moved = cycle.Prime();
        console = captured.Output();
        errors = captured.Error();
        return moved;
    }

    SimulatedBoard board;
    MeasurementCycle cycle;
    std::string console;
    std::string errors;
};

TEST_F(Prime, OpensTheValveTurnsThePumpTwiceAndClosesTheValve) {
    EXPECT_TRUE(RunPrime());
    EXPECT_EQ(console, "MeasurementCycle.cpp, 150, success: 1\n"
                       "MeasurementCycle.cpp, 152, success: 1\n"
                       "MeasurementCycle.cpp, 158, success: 1\n");
    EXPECT_EQ(errors, "");
    EXPECT_EQ(Writes(board), (Texts{"pwmchip0 export 3",
                                    // the valve opens, 1000 Hz and 100 %
                                    "pwm3 duty_cycle 0 EINVAL", "pwm3 period 1000000",
                                    "pwm3 duty_cycle 1000000", "pwm3 enable 1",
                                    // the pump turns at 1600 Hz with its full current
                                    "A4 value 1", "A5 value 1", "A6 value 1", "A2 value 0",
                                    "pwm1 duty_cycle 0 EINVAL", "pwm1 period 625000",
                                    "pwm1 duty_cycle 312500", "pwm1 enable 1",
                                    // it stops and is braked
                                    "pwm1 enable 0", "A2 value 1", "A4 value 0", "A5 value 0",
                                    "A6 value 0", "A2 value 0",
                                    // the valve closes
                                    "pwm3 enable 0"}));
    EXPECT_EQ(board.Now(), sim::Milliseconds(2000));
    EXPECT_EQ(board.Model().shaft.StepsTurned(board.Now()), 3200);
}

TEST_F(Prime, AnswersForThePumpAndStillClosesTheValve) {
    board.Fail("pthread_mutex_lock", "", EINVAL); // the pump's own lock
    EXPECT_FALSE(RunPrime());
    EXPECT_EQ(console, "MeasurementCycle.cpp, 150, success: 1\n"
                       "MeasurementCycle.cpp, 152, success: 1\n"
                       "StepperDriverMotor::MoveAngle failed!\n"
                       "MeasurementCycle.cpp, 158, success: 1\n");
    EXPECT_EQ(Writes(board).back(), "pwm3 enable 0");
    EXPECT_EQ(board.Now(), 0);
}

TEST_F(Prime, SucceedsWithAValveThatDoesNotSwitch) {
    board.TakeAway("/sys/class/pwm/pwmchip0/pwm3");
    EXPECT_TRUE(RunPrime());
    EXPECT_EQ(console, "MeasurementCycle.cpp, 150, success: 1\n"
                       "ValvePWM::ValveOn: valve did not successfully turn on\n"
                       "MeasurementCycle.cpp, 152, success: 0\n"
                       "not locked yet\n"
                       "ValvePWM::ValveOff: error turning valve off\n"
                       "MeasurementCycle.cpp, 158, success: 0\n");
    EXPECT_EQ(board.Model().shaft.StepsTurned(board.Now()), 3200);
}

TEST(StartPositionWithoutPump, IsNotFound) {
    SimulatedBoard board;
    MeasurementCycle cycle;
    EXPECT_FALSE(cycle.doFindStartPosition(360));
    EXPECT_FALSE(board.Line("B18").exported);
}

} // namespace
} // namespace tavrelin
