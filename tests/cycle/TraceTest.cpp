#include "cycle/HomeSensor.h"
#include "cycle/ReagentDelivery.h"
#include "cycle/StartPosition.h"

#include "tests/cycle/Instrument.h"

#include <cerrno>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;
using sim::Texts;

constexpr const char* kSensorValue = "/sys/class/gpio/pioB18/value";

/// The calls of the hook by the cycle and its sensor, with what they are told.
Texts TraceOf(const SimulatedBoard& board) {
    Texts trace;
    for (const std::string& event : board.Events()) {
        if (event.rfind("trace MeasurementCycle.cpp ", 0) == 0 ||
            event.rfind("trace HomeSensor.cpp ", 0) == 0) {
            trace.push_back(event.substr(event.find(' ') + 1));
        }
    }
    return trace;
}

TEST(Trace, OfAStepStandsBeforeTheLedsStart) {
    Instrument instrument;
    instrument.Run({});
    EXPECT_EQ(Picked(instrument.board, {"trace", "thread-start"}),
              (Texts{"thread 1: trace MeasurementCycle.cpp doStepRequest 434",
                     "thread 1: thread-start - 2", "thread 1: thread-start - 3"}));
}

TEST(Trace, OfAStepStandsAfterTheReagentWorkersStart) {
    Instrument instrument;
    instrument.Run({.MotorSpeed = 200});
    EXPECT_EQ(Picked(instrument.board, {"doStepRequest", "thread-start"}),
              (Texts{"thread 1: thread-start - 2",
                     "thread 1: trace MeasurementCycle.cpp doStepRequest 434",
                     "thread 1: thread-start - 3", "thread 1: thread-start - 4"}));
}

std::string Stage(int line) {
    return "MeasurementCycle.cpp doReagentDeliveryThread " + std::to_string(line);
}

class DeliveryTrace : public testing::Test {
  protected:
    Texts TraceOfADelivery(float angle, std::uint32_t speed, bool findStart = false) {
        const StepRequest request = instrument.RequestFor({.Duration = 1000,
                                                           .FindStartPosition = findStart,
                                                           .MotorAngle = angle,
                                                           .MotorSpeed = speed});
        DeliverReagent(&request);
        return TraceOf(instrument.board);
    }

    Instrument instrument;
};

TEST_F(DeliveryTrace, OfAMoveMarksItsStagesAroundTheMove) {
    instrument.SetLastPumpAngle(90.0F);
    TraceOfADelivery(180.0F, 180);
    const std::string trace = "thread 1: trace ";
    EXPECT_EQ(Picked(instrument.board, {"trace", "sleep", "A4/value"}),
              (Texts{trace + Stage(986), trace + Stage(995), "thread 1: write A4/value \"1\"",
                     "thread 1: sleep - 1000000 us", "thread 1: write A4/value \"0\"",
                     trace + Stage(1053), trace + Stage(1059)}));
}

TEST_F(DeliveryTrace, OfASearchMarksItsStagesAroundTheSearch) {
    instrument.board.Fail("open", kSensorValue, EACCES, 3); // the flag, once
    const std::string look = "HomeSensor.cpp IsStopPosition 96";
    EXPECT_EQ(
        TraceOfADelivery(360.0F, 200, true),
        (Texts{Stage(986), Stage(995), Stage(1008), "MeasurementCycle.cpp doFindStartPosition 231",
               look, look, look, look, Stage(1011), Stage(1059)}));
}

TEST_F(DeliveryTrace, WithoutSpeedMarksBeginningAndEnd) {
    EXPECT_EQ(TraceOfADelivery(180.0F, 0), (Texts{Stage(986), Stage(1059)}));
}

TEST_F(DeliveryTrace, WithoutTimeToMoveMarksAlsoThatItCould) {
    EXPECT_EQ(TraceOfADelivery(0.5F, 180), (Texts{Stage(986), Stage(995), Stage(1059)}));
}

// The pump's start, each look for the flag, and neither the debouncing nor the final check.
TEST(Trace, OfASearchStandsAfterThePumpsStartAndBeforeEachLookForTheFlag) {
    Instrument instrument;
    SimulatedBoard& board = instrument.board;
    board.SetInput("B18", true);
    board.Fail("open", kSensorValue, EACCES, 3);
    EXPECT_TRUE(instrument.cycle.doFindStartPosition(360));
    const std::string look = "thread 1: trace HomeSensor.cpp IsStopPosition 96";
    const std::string high = "thread 1: read B18/value \"1\\n\"";
    Texts expected = {"thread 1: write pwm1/enable \"1\"",
                      "thread 1: trace MeasurementCycle.cpp doFindStartPosition 231"};
    const Texts looks = {look, high, look, high, look, "thread 1: open B18/value EACCES",
                         look, high};
    expected.insert(expected.end(), looks.begin(), looks.end());
    expected.insert(expected.end(), 10, high); // the debouncing
    expected.insert(expected.end(), {"thread 1: write pwm1/enable \"0\"", high});
    EXPECT_EQ(Picked(board, {"trace", "B18/value", "write pwm1/enable"}), expected);
}

TEST(Trace, OfASearchWithoutPumpIsEmpty) {
    SimulatedBoard board;
    EXPECT_FALSE(doFindStartPosition(nullptr, 360));
    EXPECT_EQ(TraceOf(board), Texts{});
}

TEST(Trace, OfTheSensorStandsBeforeTheLookForTheFlagAlone) {
    SimulatedBoard board;
    HomeSensor sensor;
    board.Forget();
    sensor.IsStopPosition();
    sensor.IsLevelHigh();
    EXPECT_EQ(Happenings(board),
              (Texts{"thread 1: trace HomeSensor.cpp IsStopPosition 96",
                     "thread 1: read B18/value \"1\\n\"", "thread 1: read B18/value \"1\\n\""}));
}

} // namespace
} // namespace tavrelin
