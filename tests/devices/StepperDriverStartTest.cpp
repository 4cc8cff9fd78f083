#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <cerrno>
#include <cmath>
#include <limits>
#include <vector>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kRefused = "Invalid PWM frequency or duty cycle in StepperDriver::Start\n";
constexpr const char* kNotStarted = "Stepper Driver: PWM enable or chip enable failed\n";
constexpr const char* kNotStopped = "Stepper Driver: PWM disable or chip disable failed\n";
constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();
constexpr float kEndless = std::numeric_limits<float>::infinity();

TEST(StepperDriverStart, EnablesTheChipBeforeThePulses) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Forget();
    CapturedConsole console;
    EXPECT_TRUE(stirrer.driver.Start(50.0F, 640.0F));
    EXPECT_EQ(Writes(board),
              (Texts{"B15 value 0", "pwm2 duty_cycle 0 EINVAL", "pwm2 period 1562500",
                     "pwm2 duty_cycle 781250", "pwm2 enable 1"}));
    EXPECT_TRUE(board.Channel(2).Pulsing());
    EXPECT_TRUE(stirrer.driver.Stop());
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(StepperDriverStart, LeavesTheDirectionLineAlone) {
    SimulatedBoard board;
    StepperDriver driver(1);
    driver.SetupPins(0, 2, 0, 3);
    board.Forget();
    EXPECT_TRUE(driver.Start(50.0F, 640.0F));
    EXPECT_TRUE(driver.Stop());
    EXPECT_EQ(board.WritesTo("A3"), Texts{});
}

// What is asked for, in percent and Hz, and the nanoseconds that go out.
struct Pulse {
    float dutyCycle;
    float frequency;
    Texts nanoseconds;
};

TEST(StepperDriverStart, TakesFrequencyAndDutyUpToTheirLimits) {
    const std::vector<Pulse> pulses = {
        {100.0F, 1.0F, {"period 1000000000", "duty_cycle 1000000000"}},
        {50.0F, 1.0F, {"period 1000000000", "duty_cycle 500000000"}},
        {50.0F, 100000000.0F, {"period 10", "duty_cycle 5"}},
        {100.0F, 100000000.0F, {"period 10", "duty_cycle 10"}},
        {std::numeric_limits<float>::denorm_min(), 1000.0F, {"period 1000000", "duty_cycle 0"}},
    };
    for (const Pulse& pulse : pulses) {
        SimulatedBoard board;
        Stirrer stirrer;
        EXPECT_TRUE(stirrer.driver.Start(pulse.dutyCycle, pulse.frequency));
        const Texts writes = board.WritesTo("pwm2");
        EXPECT_EQ(Texts(writes.begin() + 1, writes.end() - 1), pulse.nanoseconds);
        EXPECT_TRUE(stirrer.driver.Stop());
    }
}

TEST(StepperDriverStart, RefusesFrequencyAndDutyBeyondTheirLimits) {
    const std::vector<Pulse> pulses = {
        {0.0F, 1000.0F, {}},
        {-0.0F, 1000.0F, {}},
        {-1.0F, 1000.0F, {}},
        {std::nextafter(100.0F, 101.0F), 1000.0F, {}},
        {101.0F, 1000.0F, {}},
        {kNothing, 1000.0F, {}},
        {kEndless, 1000.0F, {}},
        {50.0F, std::nextafter(1.0F, 0.0F), {}},
        {50.0F, 0.0F, {}},
        {50.0F, -1000.0F, {}},
        {50.0F, std::nextafter(100000000.0F, kEndless), {}},
        {50.0F, kNothing, {}},
        {50.0F, kEndless, {}},
    };
    for (const Pulse& pulse : pulses) {
        SimulatedBoard board;
        Stirrer stirrer;
        board.Forget();
        CapturedConsole console;
        EXPECT_FALSE(stirrer.driver.Start(pulse.dutyCycle, pulse.frequency));
        EXPECT_EQ(console.Output(), kRefused) << pulse.dutyCycle << " " << pulse.frequency;
        EXPECT_EQ(console.Error(), "");
        EXPECT_EQ(board.Events(), Texts{});
        EXPECT_EQ(board.Calls("pthread_mutex_lock"), 0U);
    }
}

TEST(StepperDriverStart, GivesUpWhenTheChannelsMutexCannotBeLocked) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Forget();
    board.Fail("pthread_mutex_lock", "", EINVAL);
    CapturedConsole console;
    EXPECT_FALSE(stirrer.driver.Start(50.0F, 640.0F));
    EXPECT_EQ(console.Output(), "Stepper Driver: PWM mutex lock failed\n");
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(board.Calls("pthread_mutex_unlock"), 0U);
}

// Which open of which attribute fails while a never-programmed channel is started; what is written
// all the same, up to and with the stop that follows.
struct StartFailure {
    std::string attribute;
    unsigned occurrence;
    Texts writes;
    const char* output;
    const char* error;
};

const std::string kEnableLine = "/sys/class/gpio/pioB15/value";
const std::string kChannel = "/sys/class/pwm/pwmchip0/pwm2/";

const std::vector<StartFailure> kStartFailures = {
    {kEnableLine,
     1,
     {"pwm2 enable 0 EINVAL", "B15 value 1"},
     kNotStarted,
     "unable to set the gpio value"},
    {kChannel + "duty_cycle",
     1,
     {"B15 value 0", "pwm2 enable 0 EINVAL", "B15 value 1"},
     kNotStarted,
     "unable to reset pwm duty cycle"},
    {kChannel + "duty_cycle",
     2,
     {"B15 value 0", "pwm2 duty_cycle 0 EINVAL", "pwm2 period 1562500", "pwm2 enable 0",
      "B15 value 1"},
     kNotStarted,
     "unable to set pwm duty cycle"},
    {kChannel + "enable",
     2,
     {"B15 value 0", "pwm2 duty_cycle 0 EINVAL", "pwm2 period 1562500", "pwm2 duty_cycle 781250",
      "pwm2 enable 0", "B15 value 1"},
     kNotStarted,
     "unable to enable a pwm"},
};

TEST(StepperDriverStart, ThatFailsStopsThePulsesDisablesTheChipAndFreesTheMutex) {
    for (const StartFailure& failure : kStartFailures) {
        SCOPED_TRACE(failure.attribute + " " + std::to_string(failure.occurrence));
        SimulatedBoard board;
        Stirrer stirrer;
        board.Forget();
        board.Fail("open", failure.attribute, EACCES, failure.occurrence);
        CapturedConsole console;
        EXPECT_FALSE(stirrer.driver.Start(50.0F, 640.0F));
        EXPECT_EQ(Writes(board), failure.writes);
        EXPECT_EQ(console.Output(), failure.output);
        EXPECT_EQ(console.Error(), failure.error);
        EXPECT_TRUE(board.Line("B15").level);
        EXPECT_FALSE(board.Channel(2).enabled);
        EXPECT_TRUE(stirrer.driver.Start(50.0F, 640.0F)); // would wait for ever on a held mutex
        EXPECT_TRUE(stirrer.driver.Stop());
    }
}

TEST(StepperDriverStart, ThatCannotEvenStopThePulsesLeavesTheChipEnabled) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Forget();
    board.FailForever("open", kChannel + "enable", EACCES);
    CapturedConsole console;
    EXPECT_FALSE(stirrer.driver.Start(50.0F, 640.0F));
    EXPECT_EQ(Writes(board), (Texts{"B15 value 0"}));
    EXPECT_EQ(console.Output(), std::string(kNotStarted) + kNotStopped);
    EXPECT_EQ(console.Error(),
              "unable to enable a pwmunable to set pwm frequencyunable to enable a pwm");
    EXPECT_EQ(board.Calls("pthread_mutex_unlock"), 1U);
}

TEST(StepperDriverStart, ShowsThatTheChannelCouldNotBeClaimed) {
    SimulatedBoard board;
    board.Fail("open", "/sys/class/pwm/pwmchip0/export", EACCES);
    Stirrer stirrer;
    board.Forget();
    CapturedConsole console;
    EXPECT_FALSE(stirrer.driver.Start(50.0F, 640.0F));
    EXPECT_EQ(Writes(board), (Texts{"B15 value 0"}));
    EXPECT_EQ(console.Output(), std::string(kNotStarted) + "not locked yet\n" + kNotStopped);
    EXPECT_EQ(console.Error(), "not locked yet\nunable to set pwm frequency");
}

TEST(StepperDriverStart, CountsAsDoneWithoutPulsesWhenThePeriodCannotBeOpened) {
    SimulatedBoard board;
    Stirrer stirrer;
    board.Forget();
    board.Fail("open", kChannel + "period", EACCES);
    CapturedConsole console;
    EXPECT_TRUE(stirrer.driver.Start(50.0F, 640.0F));
    EXPECT_EQ(Writes(board), (Texts{"B15 value 0", "pwm2 duty_cycle 0 EINVAL"}));
    EXPECT_EQ(board.Calls("pthread_mutex_unlock"), 0U);
    EXPECT_TRUE(stirrer.driver.Stop());
    EXPECT_EQ(console.Output() + console.Error(), "");
}

} // namespace
} // namespace tavrelin
