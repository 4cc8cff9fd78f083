#include "tests/devices/Drivers.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"

#include <cerrno>
#include <vector>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kNoOutputs = "Setting current limit GPIO pin(s) to outputs failed\n";
constexpr const char* kNoValues =
    "Reagent Stepper Motor: Setting current limit pin values failed\n";

TEST(PumpMotorSetup, ClaimsTheThreeLinesThenMakesThemOutputsThenSetsTheLevel) {
    const SimulatedBoard board;
    CapturedConsole console;
    StepperDriverMotor motor(1);
    motor.SetupCurrentLimitPins(0, 4, 0, 5, 0, 6, 7);
    EXPECT_TRUE(motor.Ok());
    EXPECT_EQ(Writes(board),
              (Texts{"gpio export 4", "A4 direction in", "A4 edge none", "gpio export 5",
                     "A5 direction in", "A5 edge none", "gpio export 6", "A6 direction in",
                     "A6 edge none", "A4 direction out", "A4 edge none", "A5 direction out",
                     "A5 edge none", "A6 direction out", "A6 edge none", "A4 value 1", "A5 value 1",
                     "A6 value 1"}));
    EXPECT_EQ(console.Output() + console.Error(), "");
}

TEST(PumpMotorSetup, GivesBackTheLimitLinesInTheirOrderThenTheDriver) {
    SimulatedBoard board;
    {
        const Pump pump;
        board.Forget();
    }
    EXPECT_EQ(Writes(board), (Texts{"gpio unexport 4", "gpio unexport 5", "gpio unexport 6",
                                    "pwm1 enable 0 EINVAL", "pwmchip0 unexport 1",
                                    "gpio unexport 2", "gpio unexport 3"}));
}

// Which open of which attribute fails, and what was written after the lines were claimed.
struct SetupFailure {
    std::string attribute;
    unsigned occurrence;
    Texts writes;
    const char* output;
    const char* error;
};

const std::string kLine = "/sys/class/gpio/pioA";
constexpr const char* kNoMode = "unable to set the gpio mode";
constexpr const char* kNoTrigger = "unable to set the gpio trigger";
constexpr const char* kNoValue = "unable to set the gpio value";

const Texts kOutputs = {"A4 direction out", "A4 edge none",     "A5 direction out",
                        "A5 edge none",     "A6 direction out", "A6 edge none"};

Texts FirstOutputs(std::ptrdiff_t count) {
    return {kOutputs.begin(), kOutputs.begin() + count};
}

Texts OutputsAnd(const Texts& more) {
    Texts writes = kOutputs;
    writes.insert(writes.end(), more.begin(), more.end());
    return writes;
}

std::vector<SetupFailure> SetupFailures() {
    return {{kLine + "4/direction", 2, FirstOutputs(0), kNoOutputs, kNoMode},
            {kLine + "4/edge", 2, FirstOutputs(1), kNoOutputs, kNoTrigger},
            {kLine + "5/direction", 2, FirstOutputs(2), kNoOutputs, kNoMode},
            {kLine + "5/edge", 2, FirstOutputs(3), kNoOutputs, kNoTrigger},
            {kLine + "6/direction", 2, FirstOutputs(4), kNoOutputs, kNoMode},
            {kLine + "6/edge", 2, FirstOutputs(5), kNoOutputs, kNoTrigger},
            {kLine + "4/value", 1, OutputsAnd({}), kNoValues, kNoValue},
            {kLine + "5/value", 1, OutputsAnd({"A4 value 1"}), kNoValues, kNoValue},
            {kLine + "6/value", 1, OutputsAnd({"A4 value 1", "A5 value 1"}), kNoValues, kNoValue}};
}

TEST(PumpMotorSetup, StopsAtTheFirstStepThatFails) {
    constexpr std::ptrdiff_t claims = 9;
    for (const SetupFailure& failure : SetupFailures()) {
        SCOPED_TRACE(failure.attribute);
        SimulatedBoard board;
        board.Fail("open", failure.attribute, EACCES, failure.occurrence);
        CapturedConsole console;
        StepperDriverMotor motor(1);
        motor.SetupCurrentLimitPins(0, 4, 0, 5, 0, 6, 7);
        EXPECT_FALSE(motor.Ok());
        const Texts writes = Writes(board);
        EXPECT_EQ(Texts(writes.begin() + claims, writes.end()), failure.writes);
        EXPECT_EQ(console.Output(), failure.output);
        EXPECT_EQ(console.Error(), failure.error);
    }
}

TEST(PumpMotorSetup, ClaimsTheLimitLinesEvenForAMotorThatIsNotUsable) {
    SimulatedBoard board;
    CapturedConsole console;
    StepperDriverMotor motor(4);
    motor.SetupCurrentLimitPins(0, 4, 0, 5, 0, 6, 7);
    EXPECT_FALSE(motor.Ok());
    EXPECT_TRUE(board.Line("A4").output && board.Line("A5").output && board.Line("A6").output);
    EXPECT_FALSE(board.Line("A4").level || board.Line("A5").level || board.Line("A6").level);
    EXPECT_EQ(console.Output(), "StepperDriverBase: Invalid PWM channel\n");
    EXPECT_EQ(console.Error(), "");
}

TEST(PumpMotorSetup, MakesAMotorWithoutMutexUnusableInSilence) {
    SimulatedBoard board;
    board.Fail("pthread_mutex_init", "", ENOMEM);
    CapturedConsole console;
    StepperDriverMotor motor(1);
    EXPECT_FALSE(motor.Ok());
    motor.SetupPins(0, 2, 0, 3);
    EXPECT_EQ(Writes(board), Texts{});
    EXPECT_EQ(console.Output() + console.Error(), "");
}

struct CurrentLimit {
    std::uint32_t level;
    Texts writes;
};

TEST(PumpMotorCurrentLimit, GoesOutAsANumberOfThreeBits) {
    const Texts none = {"A4 value 0", "A5 value 0", "A6 value 0"};
    const std::vector<CurrentLimit> limits = {
        {0, none},
        {1, {"A4 value 1", "A5 value 0", "A6 value 0"}},
        {2, {"A4 value 0", "A5 value 1", "A6 value 0"}},
        {3, {"A4 value 1", "A5 value 1", "A6 value 0"}},
        {4, {"A4 value 0", "A5 value 0", "A6 value 1"}},
        {5, {"A4 value 1", "A5 value 0", "A6 value 1"}},
        {6, {"A4 value 0", "A5 value 1", "A6 value 1"}},
        {7, {"A4 value 1", "A5 value 1", "A6 value 1"}},
        {8, none},
        {15, none},
        {4294967295U, none},
    };
    SimulatedBoard board;
    Pump pump;
    for (const CurrentLimit& limit : limits) {
        board.Forget();
        EXPECT_TRUE(pump.motor.SetCurrentLimit(limit.level));
        EXPECT_EQ(Writes(board), limit.writes) << limit.level;
    }
}

TEST(PumpMotorCurrentLimit, StopsAtTheFirstLineThatFails) {
    const Texts levels = {"A4 value 1", "A5 value 0", "A6 value 1"};
    for (const std::ptrdiff_t before : {0, 1, 2}) {
        SimulatedBoard board;
        Pump pump;
        board.Forget();
        board.Fail("open", kLine + std::to_string(4 + before) + "/value", EACCES);
        CapturedConsole console;
        EXPECT_FALSE(pump.motor.SetCurrentLimit(5));
        EXPECT_EQ(Writes(board), Texts(levels.begin(), levels.begin() + before));
        EXPECT_EQ(console.Output(), kNoValues);
        EXPECT_TRUE(pump.motor.Ok());
        EXPECT_TRUE(pump.motor.SetCurrentLimit(5));
    }
}

TEST(PumpMotorCurrentLimit, OfAMotorThatIsNotUsableFailsInSilence) {
    const SimulatedBoard board;
    CapturedConsole console;
    StepperDriverMotor motor(4);
    EXPECT_FALSE(motor.SetCurrentLimit(7));
    EXPECT_EQ(console.Output(), "StepperDriverBase: Invalid PWM channel\n");
    EXPECT_EQ(board.Events(), Texts{});
}

} // namespace
} // namespace tavrelin
