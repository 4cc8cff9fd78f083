#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <array>
#include <cerrno>
#include <vector>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

const Texts kEnableLineWrites = {"gpio export 47",    "B15 direction in", "B15 edge none",
                                 "B15 direction out", "B15 edge none",    "B15 value 1"};

TEST(StepperDriverChannel, IsOneOfTheFour) {
    const SimulatedBoard board;
    for (std::uint8_t channel = 0; channel < 4; ++channel) {
        const StepperDriver driver(channel);
        EXPECT_TRUE(driver.Ok());
        EXPECT_EQ(driver.Channel(), channel);
    }
    EXPECT_EQ(board.Events(), Texts{});
}

TEST(StepperDriverChannel, BeyondTheFourthMakesADriverThatDoesNothing) {
    for (const std::uint8_t channel : std::array<std::uint8_t, 3>{4, 52, 255}) {
        const SimulatedBoard board;
        CapturedConsole console;
        StepperDriver driver(channel);
        EXPECT_FALSE(driver.Ok());
        EXPECT_EQ(driver.Channel(), 0);
        EXPECT_EQ(console.Output(), "StepperDriverBase: Invalid PWM channel\n");
        driver.SetupEnablePin(1, 15);
        driver.SetupPins(0, 2, 0, 3);
        EXPECT_FALSE(driver.Start(50.0F, 640.0F));
        EXPECT_FALSE(driver.Stop());
        EXPECT_FALSE(driver.Run(50.0F, 640.0F, 100, false));
        EXPECT_EQ(console.Output(), "StepperDriverBase: Invalid PWM channel\n");
        EXPECT_EQ(console.Error(), "");
        EXPECT_EQ(board.Events(), Texts{});
        EXPECT_EQ(board.Calls("pthread_mutex_lock") + board.Calls("pthread_mutex_unlock"), 0U);
    }
}

TEST(StepperDriverSetup, LeavesTheChipDisabledAndThenClaimsTheChannel) {
    SimulatedBoard board;
    CapturedConsole console;
    const Stirrer stirrer;
    Texts expected = kEnableLineWrites;
    expected.emplace_back("pwmchip0 export 2");
    EXPECT_EQ(Writes(board), expected);
    EXPECT_TRUE(stirrer.driver.Ok());
    EXPECT_TRUE(board.Line("B15").output && board.Line("B15").level);
    EXPECT_FALSE(board.Channel(2).Pulsing());
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(StepperDriverSetup, TakesTheDirectionLineBeforeTheEnableLine) {
    const SimulatedBoard board;
    StepperDriver driver(1);
    driver.SetupPins(0, 2, 0, 3);
    EXPECT_TRUE(driver.Ok());
    EXPECT_EQ(
        Writes(board),
        (Texts{"gpio export 3", "A3 direction in", "A3 edge none", "A3 direction out",
               "A3 edge none", "A3 value 1", "gpio export 2", "A2 direction in", "A2 edge none",
               "A2 direction out", "A2 edge none", "A2 value 1", "pwmchip0 export 1"}));
}

TEST(StepperDriverSetup, GivesBackChannelThenEnableLineThenDirectionLine) {
    SimulatedBoard board;
    {
        StepperDriver driver(1);
        driver.SetupPins(0, 2, 0, 3);
        board.Forget();
    }
    EXPECT_EQ(Writes(board), (Texts{"pwm1 enable 0 EINVAL", "pwmchip0 unexport 1",
                                    "gpio unexport 2", "gpio unexport 3"}));
}

// Which open of which attribute fails, what the line says to it, and how many writes came before.
struct SetupFailure {
    const char* attribute;
    unsigned occurrence;
    const char* complaint;
    std::size_t writesBefore;
};

const std::vector<SetupFailure> kSetupFailures = {
    {"/sys/class/gpio/export", 1, "unable to lock a gpionot locked yet\nnot used yet\n", 0},
    {"/sys/class/gpio/pioB15/direction", 2, "unable to set the gpio mode", 3},
    {"/sys/class/gpio/pioB15/edge", 2, "unable to set the gpio trigger", 4},
    {"/sys/class/gpio/pioB15/value", 1, "unable to set the gpio value", 5},
};

TEST(StepperDriverSetup, StopsAtTheFirstStepOfTheEnableLineThatFails) {
    for (const SetupFailure& failure : kSetupFailures) {
        SCOPED_TRACE(failure.attribute);
        SimulatedBoard board;
        CapturedConsole console;
        Texts done;
        board.Fail("open", failure.attribute, EACCES, failure.occurrence);
        {
            const Stirrer stirrer;
            EXPECT_FALSE(stirrer.driver.Ok());
            done = Writes(board);
        }
        EXPECT_EQ(done, Texts(kEnableLineWrites.begin(),
                              kEnableLineWrites.begin() +
                                  static_cast<std::ptrdiff_t>(failure.writesBefore)));
        EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
        EXPECT_EQ(console.Output(), "StepperDriverBase: Setting up enable GPIO pin failed\n");
        EXPECT_EQ(console.Error(), failure.complaint);
    }
}

TEST(StepperDriverSetup, AfterAFailedDirectionLineNeverTouchesEnableLineAndChannel) {
    for (const char* attribute : {"direction", "edge", "value"}) {
        SCOPED_TRACE(attribute);
        SimulatedBoard board;
        CapturedConsole console;
        const std::string path = std::string("/sys/class/gpio/pioA3/") + attribute;
        board.Fail("open", path, EACCES, std::string(attribute) == "value" ? 1 : 2);
        StepperDriver driver(1);
        driver.SetupPins(0, 2, 0, 3);
        EXPECT_FALSE(driver.Ok());
        EXPECT_EQ(console.Output(), "StepperDriverBase: Setting up direction GPIO pin failed\n");
        EXPECT_EQ(board.WritesTo("gpio"), (Texts{"export 3"}));
        EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
        EXPECT_FALSE(board.Line("A2").exported);
    }
}

TEST(StepperDriverSetup, TellsAFailedEnableLineOnceWhenTheDirectionLineWasFine) {
    SimulatedBoard board;
    CapturedConsole console;
    board.Fail("open", "/sys/class/gpio/pioA2/value", EACCES);
    StepperDriver driver(1);
    driver.SetupPins(0, 2, 0, 3);
    EXPECT_FALSE(driver.Ok());
    EXPECT_EQ(console.Output(), "StepperDriverBase: Setting up enable GPIO pin failed\n");
    EXPECT_EQ(board.WritesTo("pwmchip0"), Texts{});
}

TEST(StepperDriverSetup, AfterAFailureEveryOperationFailsAtOnceAndInSilence) {
    SimulatedBoard board;
    board.Fail("open", "/sys/class/gpio/pioB15/value", EACCES);
    Stirrer stirrer;
    board.Forget();
    CapturedConsole console;
    stirrer.driver.SetupEnablePin(1, 16);
    EXPECT_FALSE(stirrer.driver.Start(50.0F, 640.0F));
    EXPECT_FALSE(stirrer.driver.Start(0.0F, 640.0F));
    EXPECT_FALSE(stirrer.driver.Stop());
    EXPECT_FALSE(stirrer.driver.Run(50.0F, 640.0F, 100, false));
    EXPECT_EQ(board.Events(), Texts{});
    EXPECT_EQ(board.Calls("pthread_mutex_lock") + board.Calls("pthread_mutex_unlock"), 0U);
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(StepperDriverSetup, DoesNotLookAtWhatClaimingTheLineSaid) {
    Scenario leftBehind;
    leftBehind.board.lines.exported = {"B15"};
    const SimulatedBoard board(leftBehind);
    CapturedConsole console;
    const Stirrer stirrer;
    EXPECT_TRUE(stirrer.driver.Ok());
    EXPECT_EQ(Writes(board),
              (Texts{"B15 direction out", "B15 edge none", "B15 value 1", "pwmchip0 export 2"}));
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "already used\n");
}

TEST(StepperDriverSetup, DoesNotLookAtWhatClaimingTheChannelSaid) {
    SimulatedBoard board;
    CapturedConsole console;
    board.Fail("open", "/sys/class/pwm/pwmchip0/export", EACCES);
    const Stirrer stirrer;
    EXPECT_TRUE(stirrer.driver.Ok());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "unable to lock a pwm");
}

TEST(StepperDriverSetup, DoesNotMissAControllerThatIsNotThere) {
    SimulatedBoard board;
    CapturedConsole console;
    board.TakeAway("/sys/class/pwm/pwmchip0/npwm");
    const Stirrer stirrer;
    EXPECT_TRUE(stirrer.driver.Ok());
    EXPECT_EQ(console.Output(), "");
    EXPECT_EQ(console.Error(), "wrong pwm channel");
}

} // namespace
} // namespace tavrelin
