#include "cycle/ReagentDelivery.h"

#include "tests/cycle/Instrument.h"

#include <limits>

namespace tavrelin {
namespace {

using sim::Milliseconds;
using sim::SimulatedBoard;
using sim::Texts;

/// A delivery by itself, on the thread of the test. 1600 steps are a turn.
class ReagentDelivery : public testing::Test {
  protected:
    bool Deliver(float angle, std::uint32_t speed, std::uint32_t duration, bool findStart = false) {
        return Deliver(instrument.RequestFor({.Duration = duration,
                                              .FindStartPosition = findStart,
                                              .MotorAngle = angle,
                                              .MotorSpeed = speed}));
    }

    bool Deliver(const StepRequest& request) {
        const std::int64_t before = instrument.StepsTurned();
        const sim::Nanoseconds begin = board.Now();
        bool moved = false;
        board.Forget();
        console = ConsoleOf([&] { moved = DeliverReagent(&request); });
        turned = instrument.StepsTurned() - before;
        took = board.Now() - begin;
        return moved;
    }

    void ExpectNothingMoved() const {
        EXPECT_EQ(board.Events(), Texts{});
        EXPECT_EQ(console, "");
        EXPECT_EQ(took, 0);
    }

    /// The angle of the last delivery, as the next one shows it: half a turn beyond this is as far
    /// as half a turn.
    void ExpectLastAngle(float angle) {
        EXPECT_TRUE(Deliver(angle + 180.0F, 360, 1000));
        EXPECT_EQ(turned, 800);
    }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
    std::string console;
    std::int64_t turned = 0;
    sim::Nanoseconds took = 0;
};

TEST_F(ReagentDelivery, TurnsFromTheLastAngleToTheStepsAngleAndKeepsItForTheNext) {
    instrument.SetLastPumpAngle(90.0F);
    EXPECT_TRUE(Deliver(270.0F, 270, 5000));
    EXPECT_EQ(turned, 800);
    EXPECT_EQ(console, "");
    ExpectLastAngle(270.0F);
}

TEST_F(ReagentDelivery, GoesOnToTheNextTurnForASmallerAngle) {
    instrument.SetLastPumpAngle(270.0F);
    EXPECT_TRUE(Deliver(90.0F, 90, 5000));
    EXPECT_EQ(turned, 800) << "90 + 360 - 270 degrees";
}

TEST_F(ReagentDelivery, TakesTheTimeOfTheStepsAngleNotOfTheWay) {
    instrument.SetLastPumpAngle(270.0F);
    Deliver(90.0F, 90, 5000); // a second for 90 degrees, though it turns 180
    EXPECT_EQ(took, Milliseconds(1000));
    EXPECT_EQ(board.WritesTo("pwm1"), (Texts{"duty_cycle 0 EINVAL", "period 1250000",
                                             "duty_cycle 625000", "enable 1", "enable 0"}));
}

TEST_F(ReagentDelivery, IsDoneWithinTheStepsDuration) {
    instrument.SetLastPumpAngle(270.0F);
    Deliver(90.0F, 90, 500);
    EXPECT_EQ(took, Milliseconds(500));
    EXPECT_EQ(turned, 800);
}

TEST_F(ReagentDelivery, FailsWhenThePumpIsThereAlready) {
    instrument.SetLastPumpAngle(90.0F);
    EXPECT_FALSE(Deliver(90.0F, 90, 1000));
    EXPECT_EQ(console, "StepperDriverMotor::MoveAngle failed!\n");
    EXPECT_EQ(took, 0);
}

TEST_F(ReagentDelivery, KeepsItsAngleEvenWhenItFailed) {
    instrument.SetLastPumpAngle(90.0F);
    board.Fail("pthread_mutex_lock", "", EINVAL);
    EXPECT_FALSE(Deliver(270.0F, 270, 1000));
    EXPECT_EQ(turned, 0);
    ExpectLastAngle(270.0F);
}

TEST_F(ReagentDelivery, MovesNothingWithoutRequestPumpOrSpeed) {
    instrument.SetLastPumpAngle(90.0F);
    EXPECT_FALSE(DeliverReagent(nullptr));
    EXPECT_FALSE(Deliver(180.0F, 0, 1000));
    ExpectNothingMoved();
    EXPECT_FALSE(Deliver({.state = {.Duration = 1000, .MotorAngle = 180.0F, .MotorSpeed = 180}}));
    ExpectNothingMoved();
    ExpectLastAngle(90.0F);
}

TEST_F(ReagentDelivery, MovesNothingInNoTime) {
    instrument.SetLastPumpAngle(90.0F);
    EXPECT_FALSE(Deliver(0.5F, 1, 1000)) << "less than a degree";
    ExpectNothingMoved();
    EXPECT_FALSE(Deliver(180.0F, 180, 0)) << "a step without duration";
    ExpectNothingMoved();
    EXPECT_FALSE(Deliver(0.0F, 200, 1000, true)) << "not even a search";
    ExpectNothingMoved();
    ExpectLastAngle(90.0F);
}

TEST_F(ReagentDelivery, MovesNothingForAllOnesOfTime) {
    instrument.SetLastPumpAngle(90.0F);
    EXPECT_FALSE(Deliver(1e30F, 1, std::numeric_limits<std::uint32_t>::max()));
    ExpectNothingMoved();
    ExpectLastAngle(90.0F);
}

TEST_F(ReagentDelivery, SearchesTheStartAndCallsItZero) {
    instrument.SetLastPumpAngle(270.0F);
    EXPECT_TRUE(Deliver(360.0F, 200, 1000, true));
    EXPECT_EQ(turned, 1267) << "to the flag's trailing edge";
    EXPECT_EQ(took, sim::Microseconds(1267 * 1125)) << "longer than the step's duration";
    ExpectLastAngle(0.0F);
}

TEST_F(ReagentDelivery, KeepsTheLastAngleAfterASearchInVain) {
    instrument.SetLastPumpAngle(90.0F);
    board.SetInput("B18", true); // no flag comes
    EXPECT_FALSE(Deliver(360.0F, 200, 1000, true));
    ExpectLastAngle(90.0F);
}

TEST_F(ReagentDelivery, HasNoWorkerInAStepOfSpeedZero) {
    const StepOutcome outcome = instrument.Run({.FindStartPosition = true, .MotorAngle = 360.0F});
    EXPECT_EQ(CountOf(board, "thread-start"), 2) << "LED and valve";
    EXPECT_EQ(outcome.slots, "XXXXXX");
}

TEST(LastPumpAngle, OutlivesTheInstrument) {
    {
        Instrument first;
        first.SetLastPumpAngle(120.0F);
    }
    Instrument second;
    second.Run({.Duration = 1000, .MotorAngle = 300.0F, .MotorSpeed = 300});
    EXPECT_EQ(second.StepsTurned(), 800) << "half a turn";
}

} // namespace
} // namespace tavrelin
