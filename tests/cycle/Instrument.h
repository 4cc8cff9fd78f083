#pragma once

#include "cycle/MeasurementCycle.h"
#include "cycle/StepRequest.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/ConverterWords.h"
#include "tests/support/Happenings.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tavrelin {

/// What came of a step.
struct StepOutcome {
    bool success = false;
    std::string slots; ///< of the six, X for a true one and o for one that was not set: "XoXXXX"
    std::string console;
    sim::Nanoseconds boardTime = 0;
};

/// Runs a step on these devices. With flags it is told of `count` of the six, without any it is
/// given a null array.
StepOutcome RunStep(sim::SimulatedBoard& board, MeasurementCycle& cycle,
                    const MeasurementState& step, bool flags = true, std::uint32_t count = 6);

/// An instrument on a simulated board, initialised, with its valve claimed: the lamp is on, the
/// rest at rest, and the record of what happened on the board begins empty.
class Instrument {
  public:
    explicit Instrument(const sim::Scenario& scenario = {}, const sim::RunOptions& options = {});

    StepOutcome Run(const MeasurementState& step) { return RunStep(board, cycle, step); }

    /// What a step hands to its workers, for a worker's work on the thread of the test.
    StepRequest RequestFor(const MeasurementState& step);
    /// Samples alone for so many ms; true when the lines went to the log.
    bool Sample(std::uint32_t duration, const std::string& description = "Mixing");

    /// Makes this, at least 1 degree, the angle of the last delivery without turning the pump.
    void SetLastPumpAngle(float angle);
    /// Steps of the pump since the start, 1600 a turn.
    [[nodiscard]] std::int64_t StepsTurned() {
        return board.Model().shaft.StepsTurned(board.Now());
    }

    /// Text of the log of a day: unless told otherwise, the one on which a board starts.
    [[nodiscard]] std::string Log(const std::string& date = "2026-03-07") const {
        return board.FileOnCard(date + "_logfile.csv");
    }

    sim::SimulatedBoard board;
    MeasurementCycle cycle;
    std::vector<float> samples; ///< of the requests made here
};

/// Deeds that hold one of the texts.
sim::Texts Picked(const sim::SimulatedBoard& board, const sim::Texts& texts);

/// The usual scenario but for one thing.
template <typename Value>
sim::Scenario Where(Value sim::BoardSetup::*thing, const Value& value) {
    sim::Scenario scenario;
    scenario.board.*thing = value;
    return scenario;
}

/// The usual scenario but for the converter's readings.
inline sim::Scenario Answering(const std::vector<std::int32_t>& readings) {
    return Where(&sim::BoardSetup::converterWords, WordsFor(readings));
}

} // namespace tavrelin
