#pragma once

#include "devices/StepperDriver.h"
#include "devices/StepperDriverMotor.h"
#include "devices/ValvePWM.h"
#include "platform/PwmChannel.h"
#include "platform/SpiDevice.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavrelin {

/// What the workers of one step share. Lives on the stack of the thread that runs the step until
/// every worker is joined. All workers read it; only the monitoring worker writes, to the samples,
/// and the step's thread reads those after joining it. Devices are borrowed and may be null; each
/// is used by one worker of the step.
struct StepRequest {
    float MotorAngle = 0.0F;      ///< degrees
    std::uint32_t MotorSpeed = 0; ///< degrees per second
    bool FindStartPosition = false;
    std::uint32_t Duration = 0; ///< ms
    bool LEDStatus = false;
    bool StirringStatus = false;
    bool SRVDStatus = false;
    bool ADCMonitorStatus = false;
    bool ValveStatus = false;
    std::string Description;
    std::vector<float>* samples = nullptr;
    StepperDriver* stirrer = nullptr;
    StepperDriverMotor* reagentPump = nullptr;
    PwmChannel* led = nullptr;
    SpiDevice* externalAdc = nullptr;
    ValvePWM* valve = nullptr;
};

} // namespace tavrelin
