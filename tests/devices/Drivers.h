#pragma once

#include "devices/StepperDriverMotor.h"

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

} // namespace tavrelin
