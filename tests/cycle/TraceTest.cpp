#include "cycle/HomeSensor.h"
#include "cycle/ReagentDelivery.h"
#include "cycle/StartPosition.h"

#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

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

/// Happenings that hold one of the texts.
Texts Picked(const SimulatedBoard& board, const Texts& texts) {
    Texts picked;
    for (const std::string& happening : Happenings(board)) {
        for (const std::string& text : texts) {
            if (happening.find(text) != std::string::npos) {
                picked.push_back(happening);
            }
        }
    }
    return picked;
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
    instrument.Run({.speed = 200});
    EXPECT_EQ(Picked(instrument.board, {"doStepRequest", "thread-start"}),
              (Texts{"thread 1: thread-start - 2",
                     "thread 1: trace MeasurementCycle.cpp doStepRequest 434",
                     "thread 1: thread-start - 3", "thread 1: thread-start - 4"}));
}

class DeliveryTrace : public testing::Test {
  protected:
    void Deliver(float angle, std::uint32_t speed, bool findStart = false) {
        StepRequest request;
        request.MotorAngle = angle;
        request.MotorSpeed = speed;
        request.FindStartPosition = findStart;
        request.Duration = 1000;
        request.reagentPump = instrument.cycle.ReagentPump();
        DeliverReagent(&request);
    }

    Instrument instrument;
    SimulatedBoard& board = instrument.board;
};

TEST_F(DeliveryTrace, OfAMoveMarksItsStages) {
    instrument.SetLastPumpAngle(90.0F);
    Deliver(180.0F, 180);
    EXPECT_EQ(TraceOf(board), (Texts{"MeasurementCycle.cpp doReagentDeliveryThread 986",
                                     "MeasurementCycle.cpp doReagentDeliveryThread 995",
                                     "MeasurementCycle.cpp doReagentDeliveryThread 1053",
                                     "MeasurementCycle.cpp doReagentDeliveryThread 1059"}));
}

TEST_F(DeliveryTrace, OfAMoveStandsAroundTheMove) {
    instrument.SetLastPumpAngle(90.0F);
    Deliver(180.0F, 180);
    EXPECT_EQ(Picked(board, {"trace", "sleep", "A4/value"}),
              (Texts{"thread 1: trace MeasurementCycle.cpp doReagentDeliveryThread 986",
                     "thread 1: trace MeasurementCycle.cpp doReagentDeliveryThread 995",
                     "thread 1: write A4/value \"1\"", "thread 1: sleep - 1000000 us",
                     "thread 1: write A4/value \"0\"",
                     "thread 1: trace MeasurementCycle.cpp doReagentDeliveryThread 1053",
                     "thread 1: trace MeasurementCycle.cpp doReagentDeliveryThread 1059"}));
}

TEST_F(DeliveryTrace, OfASearchMarksItsStagesAroundTheSearch) {
    board.Fail("open", kSensorValue, EACCES, 3); // the flag, once
    Deliver(360.0F, 200, true);
    EXPECT_EQ(TraceOf(board),
              (Texts{"MeasurementCycle.cpp doReagentDeliveryThread 986",
                     "MeasurementCycle.cpp doReagentDeliveryThread 995",
                     "MeasurementCycle.cpp doReagentDeliveryThread 1008",
                     "MeasurementCycle.cpp doFindStartPosition 231",
                     "HomeSensor.cpp IsStopPosition 96", "HomeSensor.cpp IsStopPosition 96",
                     "HomeSensor.cpp IsStopPosition 96", "HomeSensor.cpp IsStopPosition 96",
                     "MeasurementCycle.cpp doReagentDeliveryThread 1011",
                     "MeasurementCycle.cpp doReagentDeliveryThread 1059"}));
}

TEST_F(DeliveryTrace, WithoutSpeedMarksBeginningAndEnd) {
    Deliver(180.0F, 0);
    EXPECT_EQ(TraceOf(board), (Texts{"MeasurementCycle.cpp doReagentDeliveryThread 986",
                                     "MeasurementCycle.cpp doReagentDeliveryThread 1059"}));
}

TEST_F(DeliveryTrace, WithoutTimeToMoveMarksAlsoThatItCould) {
    Deliver(0.5F, 180);
    EXPECT_EQ(TraceOf(board), (Texts{"MeasurementCycle.cpp doReagentDeliveryThread 986",
                                     "MeasurementCycle.cpp doReagentDeliveryThread 995",
                                     "MeasurementCycle.cpp doReagentDeliveryThread 1059"}));
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
                      "thread 1: trace MeasurementCycle.cpp doFindStartPosition 231",
                      look,
                      high,
                      look,
                      high,
                      look,
                      "thread 1: open B18/value EACCES",
                      look,
                      high};
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
