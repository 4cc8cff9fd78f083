#pragma once

#include "cycle/MeasurementState.h"
#include "devices/StepperDriver.h"
#include "devices/StepperDriverMotor.h"
#include "devices/ValvePWM.h"
#include "platform/PwmChannel.h"
#include "platform/SpiDevice.h"

#include <vector>

namespace tavrelin {

/// What the workers of one step share. Lives on the stack of the thread that runs the step until
/// every worker is joined. All workers read it; only the monitoring worker writes, to the samples,
/// and the step's thread reads those after joining it. Devices are borrowed and may be null; each
/// is used by one worker of the step.
struct StepRequest {
    MeasurementState state; ///< a copy of the step's row
    std::vector<float>* samples = nullptr;
    StepperDriver* stirrer = nullptr;
    StepperDriverMotor* reagentPump = nullptr;
    PwmChannel* led = nullptr;
    SpiDevice* externalAdc = nullptr;
    ValvePWM* valve = nullptr;
};

} // namespace tavrelin
