#include "tests/devices/Drivers.h"

#include <cmath>
#include <limits>

namespace tavrelin {
namespace {

using sim::Texts;

const std::string kRefused = "Invalid PWM frequency or duty cycle in StepperDriver::Start\n";
const std::string kNotStarted = "Stepper Driver: PWM enable or chip enable failed\n";
const std::string kNotStopped = "Stepper Driver: PWM disable or chip disable failed\n";
constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();
constexpr float kEndless = std::numeric_limits<float>::infinity();

class StepperDriverStart : public StirrerTest {
  protected:
    bool Start() { return stirrer.Start(50.0F, 640.0F); }
};

TEST_F(StepperDriverStart, EnablesTheChipBeforeThePulses) {
    EXPECT_TRUE(Start());
    EXPECT_EQ(Writes(board), InOrder({{"B15 value 0"}, kStirrerPulses}));
    EXPECT_TRUE(board.Channel(2).Pulsing());
    EXPECT_TRUE(stirrer.Stop());
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(StepperDriverStart, LeavesTheDirectionLineAlone) {
    StepperDriver driver(1);
    driver.SetupPins(0, 2, 0, 3);
    board.Forget();
    EXPECT_TRUE(driver.Start(50.0F, 640.0F));
    EXPECT_TRUE(driver.Stop());
    EXPECT_EQ(board.WritesTo("A3"), Texts{});
}

TEST_F(StepperDriverStart, TakesFrequencyAndDutyUpToTheirLimits) {
    struct Case {
        float dutyCycle, frequency;
        const char *period, *duty;
    };
    for (const Case& pulse :
         {Case{100.0F, 1.0F, "1000000000", "1000000000"},
          Case{50.0F, 1.0F, "1000000000", "500000000"}, Case{50.0F, 100000000.0F, "10", "5"},
          Case{100.0F, 100000000.0F, "10", "10"},
          Case{std::numeric_limits<float>::denorm_min(), 1000.0F, "1000000", "0"}}) {
        Renew();
        EXPECT_TRUE(stirrer.Start(pulse.dutyCycle, pulse.frequency));
        EXPECT_EQ(Writes(board),
                  InOrder({{"B15 value 0"}, Pulses("pwm2", pulse.period, pulse.duty)}));
        EXPECT_TRUE(stirrer.Stop());
    }
}

TEST_F(StepperDriverStart, RefusesFrequencyAndDutyBeyondTheirLimits) {
    std::string refusals;
    for (const auto& [dutyCycle, frequency] :
         {std::pair{0.0F, 1000.0F}, std::pair{-0.0F, 1000.0F}, std::pair{-1.0F, 1000.0F},
          std::pair{std::nextafter(100.0F, 101.0F), 1000.0F}, std::pair{101.0F, 1000.0F},
          std::pair{kNothing, 1000.0F}, std::pair{kEndless, 1000.0F},
          std::pair{50.0F, std::nextafter(1.0F, 0.0F)}, std::pair{50.0F, 0.0F},
          std::pair{50.0F, -1000.0F}, std::pair{50.0F, std::nextafter(100000000.0F, kEndless)},
          std::pair{50.0F, kNothing}, std::pair{50.0F, kEndless}}) {
        EXPECT_FALSE(stirrer.Start(dutyCycle, frequency)) << dutyCycle << " " << frequency;
        refusals += kRefused;
    }
    EXPECT_EQ(Console(), (Said{refusals, ""}));
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(Locks(), 0U);
}

TEST_F(StepperDriverStart, GivesUpWhenTheChannelsMutexCannotBeLocked) {
    board.Fail("pthread_mutex_lock", "", EINVAL);
    EXPECT_FALSE(Start());
    EXPECT_EQ(Console(), (Said{"Stepper Driver: PWM mutex lock failed\n", ""}));
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(Unlocks(), 0U);
}

TEST_F(StepperDriverStart, ThatFailsStopsThePulsesDisablesTheChipAndFreesTheMutex) {
    // Which open of which attribute fails while a never-programmed channel is started; what is
    // written all the same before the stop that follows.
    struct Case {
        const char* attribute;
        unsigned occurrence;
        Texts writes;
        const char* error;
    };
    for (const Case& failing :
         {Case{"B15/value", 1, {"pwm2 enable 0 EINVAL"}, "unable to set the gpio value"},
          Case{"pwm2/duty_cycle",
               1,
               {"B15 value 0", "pwm2 enable 0 EINVAL"},
               "unable to reset pwm duty cycle"},
          Case{"pwm2/duty_cycle",
               2,
               {"B15 value 0", "pwm2 duty_cycle 0 EINVAL", "pwm2 period 1562500", "pwm2 enable 0"},
               "unable to set pwm duty cycle"},
          Case{"pwm2/enable",
               2,
               {"B15 value 0", "pwm2 duty_cycle 0 EINVAL", "pwm2 period 1562500",
                "pwm2 duty_cycle 781250", "pwm2 enable 0"},
               "unable to enable a pwm"}}) {
        SCOPED_TRACE(failing.error);
        Renew();
        FailToOpen(failing.attribute, failing.occurrence);
        EXPECT_FALSE(Start());
        EXPECT_EQ(Writes(board), InOrder({failing.writes, {"B15 value 1"}}));
        EXPECT_EQ(Console(), (Said{kNotStarted, failing.error}));
        EXPECT_FALSE(board.Channel(2).enabled);
        EXPECT_TRUE(Start()); // would wait for ever on a held mutex
        EXPECT_TRUE(stirrer.Stop());
    }
}

TEST_F(StepperDriverStart, ThatCannotEvenStopThePulsesLeavesTheChipEnabled) {
    board.FailForever("open", PathOf("pwm2/enable"), EACCES);
    EXPECT_FALSE(Start());
    EXPECT_EQ(Writes(board), (Texts{"B15 value 0"}));
    EXPECT_EQ(Console(),
              (Said{kNotStarted + kNotStopped,
                    "unable to enable a pwmunable to set pwm frequencyunable to enable a pwm"}));
    EXPECT_EQ(Unlocks(), 1U);
}

TEST_F(StepperDriverStart, ShowsThatTheChannelCouldNotBeClaimed) {
    board.Channel(2).exported = false;
    EXPECT_FALSE(Start());
    EXPECT_EQ(Writes(board), (Texts{"B15 value 0"}));
    EXPECT_EQ(Console(), (Said{kNotStarted + "not locked yet\n" + kNotStopped,
                               "not locked yet\nunable to set pwm frequency"}));
}

TEST_F(StepperDriverStart, CountsAsDoneWithoutPulsesWhenThePeriodCannotBeOpened) {
    FailToOpen("pwm2/period");
    EXPECT_TRUE(Start());
    EXPECT_EQ(Writes(board), (Texts{"B15 value 0", "pwm2 duty_cycle 0 EINVAL"}));
    EXPECT_EQ(Unlocks(), 0U);
    EXPECT_TRUE(stirrer.Stop());
    EXPECT_EQ(Console(), kSilence);
}

} // namespace
} // namespace tavrelin
