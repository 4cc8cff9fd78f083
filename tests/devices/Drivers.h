#pragma once

#include "devices/StepperDriverMotor.h"
#include "simulator/testing/SimulatedBoard.h"

#include <cstdint>

namespace tavrelin {

/// The stirrer as the instrument has it: channel 2, enable line B15.
struct Stirrer {
    Stirrer() { driver.SetupEnablePin(1, 15); }

    StepperDriver driver{2};
};

/// The reagent pump as the instrument has it: channel 1, enable line A2, direction line A3,
/// current-limit lines A4 to A6.
struct Pump {
    Pump() {
        motor.SetupPins(0, 2, 0, 3);
        motor.SetupCurrentLimitPins(0, 4, 0, 5, 0, 6, 7);
    }

    StepperDriverMotor motor{1};
};

/// The pump on its board, set up and what was written for that forgotten. A motor mutex that a
/// failure leaves locked goes with the pump.
struct PumpOnBoard {
    PumpOnBoard() { board.Forget(); }

    [[nodiscard]] std::uint64_t Locks() const { return board.Calls("pthread_mutex_lock"); }
    [[nodiscard]] std::uint64_t Unlocks() const { return board.Calls("pthread_mutex_unlock"); }

    sim::SimulatedBoard board;
    Pump pump;
    StepperDriverMotor& motor = pump.motor;
};

} // namespace tavrelin
