#include "cycle/ReagentDelivery.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <iostream>
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
        StepRequest request;
        request.MotorAngle = angle;
        request.MotorSpeed = speed;
        request.FindStartPosition = findStart;
        request.Duration = duration;
        request.reagentPump = instrument.cycle.ReagentPump();
        return Deliver(request);
    }

    bool Deliver(const StepRequest& request) {
        const std::int64_t before = board.Model().shaft.StepsTurned(board.Now());
        const sim::Nanoseconds begin = board.Now();
        board.Forget();
        testing::internal::CaptureStdout();
        const bool moved = DeliverReagent(&request);
        std::cout.flush();
        console = testing::internal::GetCapturedStdout();
        turned = board.Model().shaft.StepsTurned(board.Now()) - before;
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

TEST_F(ReagentDelivery, TurnsFromTheLastAngleToTheStepsAngle) {
    instrument.SetLastPumpAngle(90.0F);
    EXPECT_TRUE(Deliver(270.0F, 270, 5000));
    EXPECT_EQ(turned, 800);
    EXPECT_EQ(console, "");
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

TEST_F(ReagentDelivery, KeepsItsAngleForTheNext) {
    instrument.SetLastPumpAngle(90.0F);
    Deliver(270.0F, 270, 5000);
    ExpectLastAngle(270.0F);
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
    StepRequest withoutPump;
    withoutPump.MotorAngle = 180.0F;
    withoutPump.MotorSpeed = 180;
    withoutPump.Duration = 1000;
    EXPECT_FALSE(Deliver(withoutPump));
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
    const StepOutcome outcome = instrument.Run({.angle = 360.0F, .findStart = true});
    EXPECT_EQ(CountOf(board, "thread-start"), 2) << "LED and valve";
    EXPECT_TRUE(outcome.slots[1]);
}

TEST(LastPumpAngle, OutlivesTheInstrument) {
    {
        Instrument first;
        first.SetLastPumpAngle(120.0F);
    }
    Instrument second;
    second.Run({.angle = 300.0F, .speed = 300, .duration = 1000});
    EXPECT_EQ(second.board.Model().shaft.StepsTurned(second.board.Now()), 800) << "half a turn";
}

} // namespace
} // namespace tavrelin
