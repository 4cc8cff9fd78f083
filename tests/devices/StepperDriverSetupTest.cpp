#include "tests/devices/Drivers.h"

#include <array>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::Texts;

const Texts kEnableLineWrites = {"gpio export 47",    "B15 direction in", "B15 edge none",
                                 "B15 direction out", "B15 edge none",    "B15 value 1"};

using StepperDriverChannel = BoardTest;

TEST_F(StepperDriverChannel, IsOneOfTheFour) {
    for (std::uint8_t channel = 0; channel < 4; ++channel) {
        const StepperDriver driver(channel);
        EXPECT_TRUE(driver.Ok());
        EXPECT_EQ(driver.Channel(), channel);
    }
    EXPECT_EQ(board.Events(), Texts{});
}

TEST_F(StepperDriverChannel, BeyondTheFourthMakesADriverThatDoesNothing) {
    for (const std::uint8_t channel : std::array<std::uint8_t, 3>{4, 52, 255}) {
        NewBoard();
        StepperDriver driver(channel);
        EXPECT_FALSE(driver.Ok());
        EXPECT_EQ(driver.Channel(), 0);
        driver.SetupEnablePin(1, 15);
        driver.SetupPins(0, 2, 0, 3);
        EXPECT_FALSE(driver.Start(50.0F, 640.0F));
        EXPECT_FALSE(driver.Stop());
        EXPECT_FALSE(driver.Run(50.0F, 640.0F, 100, false));
        EXPECT_TRUE(driver.Run(50.0F, 640.0F, 0, false)); // which is nothing to do
        EXPECT_EQ(Console(), (Said{"StepperDriverBase: Invalid PWM channel\n", ""}));
        EXPECT_EQ(board.Events(), Texts{});
        EXPECT_EQ(board.Calls("pthread_mutex_lock") + board.Calls("pthread_mutex_unlock"), 0U);
    }
}

using StepperDriverSetup = BoardTest;

TEST_F(StepperDriverSetup, LeavesTheChipDisabledAndThenClaimsTheChannel) {
    const Stirrer stirrer;
    EXPECT_EQ(Writes(board), InOrder({kEnableLineWrites, {"pwmchip0 export 2"}}));
    EXPECT_TRUE(stirrer.driver.Ok());
    EXPECT_TRUE(board.Line("B15").output && board.Line("B15").level);
    EXPECT_FALSE(board.Channel(2).Pulsing());
    EXPECT_EQ(Console(), kSilence);
}

TEST_F(StepperDriverSetup, TakesTheDirectionLineFirstAndGivesItBackLast) {
    {
        StepperDriver driver(1);
        driver.SetupPins(0, 2, 0, 3);
        EXPECT_TRUE(driver.Ok());
    }
    EXPECT_EQ(Writes(board),
              (Texts{"gpio export 3", "A3 direction in", "A3 edge none", "A3 direction out",
                     "A3 edge none", "A3 value 1", "gpio export 2", "A2 direction in",
                     "A2 edge none", "A2 direction out", "A2 edge none", "A2 value 1",
                     "pwmchip0 export 1", "pwm1 enable 0 EINVAL", "pwmchip0 unexport 1",
                     "gpio unexport 2", "gpio unexport 3"}));
}

TEST_F(StepperDriverSetup, StopsAtTheFirstStepOfTheEnableLineThatFails) {
    struct Case {
        const char* path;
        unsigned occurrence;
        const char* complaint;
        std::ptrdiff_t writesBefore;
    };
    for (const Case& failing :
         {Case{"/sys/class/gpio/export", 1, "unable to lock a gpionot locked yet\nnot used yet\n",
               0},
          Case{"/sys/class/gpio/pioB15/value", 1, "unable to set the gpio value", 5}}) {
        NewBoard();
        board.Fail("open", failing.path, EACCES, failing.occurrence);
        Texts writes;
        {
            const Stirrer stirrer;
            EXPECT_FALSE(stirrer.driver.Ok());
            writes = Writes(board);
        }
        EXPECT_EQ(writes, Texts(kEnableLineWrites.begin(),
                                kEnableLineWrites.begin() + failing.writesBefore));
        EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
        EXPECT_EQ(Console(), (Said{"StepperDriverBase: Setting up enable GPIO pin failed\n",
                                   failing.complaint}));
    }
}

TEST_F(StepperDriverSetup, AfterAFailedDirectionLineNeverTouchesEnableLineAndChannel) {
    FailToOpen("A3/edge", 2);
    StepperDriver driver(1);
    driver.SetupPins(0, 2, 0, 3);
    EXPECT_FALSE(driver.Ok());
    EXPECT_EQ(console.Output(), "StepperDriverBase: Setting up direction GPIO pin failed\n");
    EXPECT_EQ(board.WritesTo("gpio"), (Texts{"export 3"}));
    EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
}

TEST_F(StepperDriverSetup, TellsAFailedEnableLineOnceWhenTheDirectionLineWasFine) {
    FailToOpen("A2/value");
    StepperDriver driver(1);
    driver.SetupPins(0, 2, 0, 3);
    EXPECT_FALSE(driver.Ok());
    EXPECT_EQ(console.Output(), "StepperDriverBase: Setting up enable GPIO pin failed\n");
    EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
}

TEST_F(StepperDriverSetup, AfterAFailureEveryOperationFailsAtOnceAndInSilence) {
    FailToOpen("B15/value");
    Stirrer stirrer;
    const Said before = Console();
    board.Forget();
    stirrer.driver.SetupEnablePin(1, 16);
    EXPECT_FALSE(stirrer.driver.Start(50.0F, 640.0F));
    EXPECT_FALSE(stirrer.driver.Start(0.0F, 640.0F));
    EXPECT_FALSE(stirrer.driver.Stop());
    EXPECT_FALSE(stirrer.driver.Run(50.0F, 640.0F, 100, false));
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Calls("pthread_mutex_lock") + board.Calls("pthread_mutex_unlock"), 0U);
    EXPECT_EQ(Console(), before);
}

TEST_F(StepperDriverSetup, DoesNotLookAtWhatClaimingTheLineSaid) {
    Scenario leftBehind;
    leftBehind.board.lines.exported = {"B15"};
    NewBoard(leftBehind);
    const Stirrer stirrer;
    EXPECT_TRUE(stirrer.driver.Ok());
    EXPECT_EQ(Writes(board),
              (Texts{"B15 direction out", "B15 edge none", "B15 value 1", "pwmchip0 export 2"}));
    EXPECT_EQ(Console(), (Said{"", "already used\n"}));
}

TEST_F(StepperDriverSetup, DoesNotLookAtWhatClaimingTheChannelSaid) {
    board.Fail("open", "/sys/class/pwm/pwmchip0/export", EACCES);
    EXPECT_TRUE(Stirrer().driver.Ok());
    EXPECT_EQ(console.Error(), "unable to lock a pwm");
    NewBoard();
    board.TakeAway("/sys/class/pwm/pwmchip0/npwm");
    EXPECT_TRUE(Stirrer().driver.Ok());
    EXPECT_EQ(console.Error(), "wrong pwm channel");
}

// Ok, but with neither line nor channel.
TEST_F(StepperDriverSetup, ThatNeverCameMakesEveryOperationFailAndSayWhy) {
    StepperDriver driver(2);
    EXPECT_TRUE(driver.Ok());
    const std::string notStarted = "Stepper Driver: PWM enable or chip enable failed\n";
    const std::string notStopped = "Stepper Driver: PWM disable or chip disable failed\n";
    EXPECT_FALSE(driver.Start(50.0F, 640.0F));
    EXPECT_EQ(Console(), (Said{notStarted + notStopped, ""}));
    EXPECT_FALSE(driver.Run(50.0F, 640.0F, 100, false)); // would wait for ever on a held mutex
    EXPECT_FALSE(driver.Stop());
    EXPECT_EQ(Console(),
              (Said{notStarted + notStopped + notStarted + notStopped + notStopped, ""}));
    EXPECT_EQ(board.Events(), Texts{});
}

} // namespace
} // namespace tavrelin
