#include "platform/PwmChannel.h"

#include "tests/support/BoardTest.h"

#include <limits>
#include <string>

namespace tavrelin {
namespace {

using sim::Texts;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Channel 1, taken and off as the kernel hands it out: its first duty cycle is refused when it is
// written, which nobody looks at.
class PwmProgramming : public BoardTest {
  protected:
    PwmProgramming() { board.Forget(); }

    PwmChannel channel{1};
};

TEST_F(PwmProgramming, WritesWholeNanosecondsAndStarts) {
    EXPECT_TRUE(channel.SetFrequencyAndDuty(1000.0F, 30.0F));
    EXPECT_EQ(board.Events(), (Texts{"read /sys/class/pwm/pwmchip0/pwm1/enable \"0\\n\"",
                                     "write /sys/class/pwm/pwmchip0/pwm1/duty_cycle \"0\" EINVAL",
                                     "write /sys/class/pwm/pwmchip0/pwm1/period \"1000000\"",
                                     "write /sys/class/pwm/pwmchip0/pwm1/duty_cycle \"300000\"",
                                     "write /sys/class/pwm/pwmchip0/pwm1/enable \"1\""}));
    EXPECT_TRUE(board.Channel(1).Pulsing());
    EXPECT_EQ(Console(), kSilence);
    EXPECT_EQ(board.Kernel().Held(), 0U);
}

TEST_F(PwmProgramming, StopsARunningChannelFirst) {
    channel.SetFrequencyAndDuty(1000.0F, 30.0F);
    board.Forget();
    EXPECT_TRUE(channel.SetFrequencyAndDuty(1600.0F, 50.0F));
    EXPECT_EQ(board.WritesTo("pwm1"), (Texts{"enable 0", "duty_cycle 0", "period 625000",
                                             "duty_cycle 312500", "enable 1"}));
}

TEST_F(PwmProgramming, LeavesAStoppedChannelStoppedUntilTheEnd) {
    channel.SetFrequencyAndDuty(1000.0F, 30.0F);
    channel.Enable(false);
    board.Forget();
    EXPECT_TRUE(channel.SetFrequencyAndDuty(1000.0F, 100.0F));
    EXPECT_EQ(board.WritesTo("pwm1"),
              (Texts{"duty_cycle 0", "period 1000000", "duty_cycle 1000000", "enable 1"}));
}

// What is written follows the arguments as given, in single precision; a conversion out of range
// ends at the end of the range. The last two columns are what the kernel is told, and what it says
// when it does not like it.
TEST_F(PwmProgramming, WritesWhatFollowsFromTheArgumentsAsGiven) {
    struct Case {
        float frequency, duty;
        const char *period, *high;
    };
    for (const Case& asked : {
             Case{1000.0F, 100.0F, "1000000", "1000000"},
             Case{1.0F, 50.0F, "1000000000", "500000000"},
             Case{100000000.0F, 50.0F, "10", "5"},
             Case{0.5F, 30.0F, "2000000000", "600000000"},
             Case{3.0F, 50.0F, "333333344", "166666672"},   // single precision
             Case{7.0F, 99.9F, "142857136", "142714288"},   // single precision
             Case{300000000.0F, 90.0F, "3", "3"},           // the period goes in unrounded
             Case{0.25F, 1.0F, "2147483647", "40000000"},   // and unsaturated
             Case{0.3F, 50.0F, "2147483647", "1666666624"}, // 3.33 s
             Case{1e-30F, 100.0F, "2147483647", "2147483647"},
             Case{0.0F, 50.0F, "2147483647", "2147483647"},
             Case{0.0F, 0.0F, "2147483647", "0"},
             Case{-0.0F, 50.0F, "-2147483648 EINVAL", "-2147483648 EINVAL"},
             Case{-1000.0F, 30.0F, "-1000000 EINVAL", "-300000 EINVAL"},
             Case{kInfinity, 50.0F, "0 EINVAL", "0 EINVAL"},
             Case{kNan, 50.0F, "0 EINVAL", "0 EINVAL"},
             Case{1000.0F, kNan, "1000000", "0"},
             Case{1000.0F, 150.0F, "1000000", "1500000 EINVAL"},
             Case{1000.0F, -5.0F, "1000000", "-50000 EINVAL"},
             Case{1000.0F, kInfinity, "1000000", "2147483647 EINVAL"},
             Case{1000.0F, 0.00015F, "1000000", "1"},
         }) {
        board.Channel(1) = {.exported = true};
        board.Forget();
        EXPECT_TRUE(channel.SetFrequencyAndDuty(asked.frequency, asked.duty));
        const std::string enable = board.Channel(1).period == 0 ? "enable 1 EINVAL" : "enable 1";
        EXPECT_EQ(board.WritesTo("pwm1"),
                  (Texts{"duty_cycle 0 EINVAL", std::string("period ") + asked.period,
                         std::string("duty_cycle ") + asked.high, enable}))
            << asked.frequency << " Hz, " << asked.duty << " %";
    }
}

TEST_F(PwmProgramming, ClampsOnlyWhatItRemembers) {
    struct Case {
        float frequency, duty, keptFrequency, keptDuty;
    };
    for (const Case& asked : {Case{1000.0F, 30.0F, 1000.0F, 30.0F}, Case{0.5F, -0.5F, 1.0F, 0.0F},
                              Case{1.0F, 0.0F, 1.0F, 0.0F}, Case{-7.0F, -1.0F, 1.0F, 0.0F},
                              Case{100000000.0F, 100.0F, 100000000.0F, 100.0F},
                              Case{200000000.0F, 100.5F, 100000000.0F, 100.0F},
                              Case{kInfinity, kInfinity, 100000000.0F, 100.0F}}) {
        EXPECT_TRUE(channel.SetFrequencyAndDuty(asked.frequency, asked.duty));
        EXPECT_EQ(channel.Frequency(), asked.keptFrequency);
        EXPECT_EQ(channel.DutyCycle(), asked.keptDuty);
    }
}

// A channel that runs at 1000 Hz and 30 %, and what becomes of it when it cannot be programmed for
// 50 Hz and 10 %: the last wish stays when nothing of the new one could be done.
class PwmProgrammingFailing : public PwmProgramming {
  protected:
    PwmProgrammingFailing() {
        channel.SetFrequencyAndDuty(1000.0F, 30.0F);
        board.Forget();
    }

    void ExpectFailure(const char* error, const Texts& writes, float frequency, float duty) {
        EXPECT_FALSE(channel.SetFrequencyAndDuty(50.0F, 10.0F));
        EXPECT_EQ(Console(), (Said{"", error}));
        EXPECT_EQ(board.WritesTo("pwm1"), writes);
        EXPECT_EQ(channel.Frequency(), frequency);
        EXPECT_EQ(channel.DutyCycle(), duty);
    }
};

TEST_F(PwmProgrammingFailing, OnAChannelThatIsUnexported) {
    board.Channel(1).exported = false;
    ExpectFailure("not locked yet\nunable to set pwm frequency", {}, 1000.0F, 30.0F);
}

TEST_F(PwmProgrammingFailing, WhenEnableCannotBeOpened) {
    board.TakeAway(PathOf("pwm1/enable"));
    EXPECT_TRUE(channel.IsEnabled());
    ExpectFailure("unable to enable a pwmunable to set pwm frequency", {}, 1000.0F, 30.0F);
}

TEST_F(PwmProgrammingFailing, WhenARunningChannelCannotBeStopped) {
    FailToOpen("pwm1/enable", 2); // after its state was read
    ExpectFailure("unable to enable a pwmunable to set pwm frequency", {}, 1000.0F, 30.0F);
    EXPECT_TRUE(board.Channel(1).Pulsing());
}

TEST_F(PwmProgrammingFailing, WhenTheDutyCycleCannotBeReset) {
    board.TakeAway(PathOf("pwm1/duty_cycle"));
    ExpectFailure("unable to reset pwm duty cycle", {"enable 0"}, 50.0F, 10.0F);
}

TEST_F(PwmProgrammingFailing, WhenTheDutyCycleCannotBeSet) {
    FailToOpen("pwm1/duty_cycle", 2);
    ExpectFailure("unable to set pwm duty cycle", {"enable 0", "duty_cycle 0", "period 20000000"},
                  50.0F, 10.0F);
}

TEST_F(PwmProgrammingFailing, WhenTheChannelCannotBeStarted) {
    FailToOpen("pwm1/enable", 3);
    ExpectFailure("unable to enable a pwm",
                  {"enable 0", "duty_cycle 0", "period 20000000", "duty_cycle 2000000"}, 50.0F,
                  10.0F);
    EXPECT_FALSE(board.Channel(1).enabled);
}

TEST_F(PwmProgrammingFailing, IsSilentAndASuccessWithTheChannelOffWhenThePeriodCannotBeOpened) {
    board.TakeAway(PathOf("pwm1/period"));
    board.Forget();
    EXPECT_TRUE(channel.SetFrequencyAndDuty(50.0F, 10.0F));
    EXPECT_EQ(Console(), kSilence);
    EXPECT_EQ(board.WritesTo("pwm1"), (Texts{"enable 0", "duty_cycle 0"}));
    EXPECT_FALSE(board.Channel(1).enabled);
    EXPECT_EQ(board.Channel(1).duty, 0U);
    EXPECT_EQ(channel.Frequency(), 50.0F);
}

using PwmChannelWithFrequency = BoardTest;

TEST_F(PwmChannelWithFrequency, RunsFromItsConstructionOn) {
    const PwmChannel channel(0, 1000.0F, 30.0F);
    EXPECT_TRUE(channel.Ok());
    EXPECT_EQ(channel.Channel(), 0);
    EXPECT_EQ(channel.Frequency(), 1000.0F);
    EXPECT_EQ(channel.DutyCycle(), 30.0F);
    EXPECT_EQ(board.WritesTo("pwmchip0"), (Texts{"export 0"}));
    EXPECT_EQ(board.WritesTo("pwm0"),
              (Texts{"duty_cycle 0 EINVAL", "period 1000000", "duty_cycle 300000", "enable 1"}));
}

TEST_F(PwmChannelWithFrequency, WritesWhatItWasGivenAndKeepsWhatIsAllowed) {
    const PwmChannel channel(0, 0.5F, -10.0F);
    EXPECT_TRUE(channel.Ok());
    EXPECT_EQ(channel.Frequency(), 1.0F);
    EXPECT_EQ(channel.DutyCycle(), 0.0F);
    EXPECT_EQ(board.WritesTo("pwm0"), (Texts{"duty_cycle 0 EINVAL", "period 2000000000",
                                             "duty_cycle -200000000 EINVAL", "enable 1"}));
}

TEST_F(PwmChannelWithFrequency, IsNotProgrammedWhenItIsInUse) {
    board.Channel(0) = {.exported = true, .period = 500, .duty = 0, .enabled = false};
    const PwmChannel channel(0, 2e8F, -1.0F);
    EXPECT_FALSE(channel.Ok());
    EXPECT_EQ(console.Error(), "already used\n");
    EXPECT_EQ(channel.Frequency(), 100000000.0F);
    EXPECT_EQ(channel.DutyCycle(), 0.0F);
    EXPECT_EQ(board.WritesTo("pwm0"), Texts{});
}

TEST_F(PwmChannelWithFrequency, FailsWhenItCannotBeProgrammed) {
    board.TakeAway(PathOf("pwm0/duty_cycle"));
    const PwmChannel channel(0, 1000.0F, 30.0F);
    EXPECT_FALSE(channel.Ok());
    EXPECT_EQ(console.Error(), "unable to reset pwm duty cycle");
}

// An earlier run that was cut off left the channel running.
TEST_F(PwmChannelWithFrequency, StopsWhatAnEarlierOwnerLeftRunning) {
    board.Channel(0) = {.exported = false, .period = 1000, .duty = 500, .enabled = true};
    const PwmChannel channel(0, 1000.0F, 30.0F);
    EXPECT_EQ(board.WritesTo("pwm0"), (Texts{"enable 0", "duty_cycle 0", "period 1000000",
                                             "duty_cycle 300000", "enable 1"}));
}

} // namespace
} // namespace tavrelin
