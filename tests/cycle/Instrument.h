#pragma once

#include "cycle/MeasurementCycle.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"
#include "tests/support/ConverterWords.h"
#include "tests/support/Happenings.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tavrelin {

/// A step as a test asks for it; what it does not name stays at rest.
struct Step {
    float angle = 0.0F;
    std::uint32_t speed = 0;
    bool findStart = false;
    std::uint32_t duration = 0; ///< ms
    bool led = false;
    bool stirring = false;
    bool srvd = false;
    bool sampling = false;
    bool valve = false;
    std::string description = "Any Step";
};

/// What came of a step. The slots that the step did not set are false.
struct StepOutcome {
    bool success = false;
    std::array<bool, 6> slots{};
    std::string console;
    sim::Nanoseconds boardTime = 0;
};

/// Runs a step on these devices. With flags it is told of `count` of the six, without any it is
/// given a null array.
StepOutcome RunStep(sim::SimulatedBoard& board, MeasurementCycle& cycle, const Step& step,
                    bool flags = true, std::uint32_t count = 6);

/// An instrument on a simulated board, initialised, with its valve claimed: the lamp is on, the
/// rest at rest, and the record of what happened on the board begins empty.
class Instrument {
  public:
    explicit Instrument(const sim::Scenario& scenario = {}, const sim::RunOptions& options = {});

    sim::SimulatedBoard board;
    MeasurementCycle cycle;

    StepOutcome Run(const Step& step) { return RunStep(board, cycle, step); }

    /// Makes this, at least 1 degree, the angle of the last delivery without turning the pump.
    void SetLastPumpAngle(float angle);

    /// Text of the log of the day on which a board starts unless told otherwise.
    [[nodiscard]] std::string Log() const { return board.FileOnCard("2026-03-07_logfile.csv"); }
};

/// Only what was written to lines, channels and converter: "pwm0/enable 1", "B15/value 0", "spi
/// SPI_IOC_WR_MODE 0".
sim::Texts Writes(const sim::SimulatedBoard& board);

} // namespace tavrelin
