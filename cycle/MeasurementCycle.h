#pragma once

#include "devices/StepperDriver.h"
#include "devices/StepperDriverMotor.h"
#include "devices/ValvePWM.h"
#include "platform/PwmChannel.h"
#include "platform/SpiDevice.h"

#include <cstdint>
#include <memory>

namespace tavrelin {

/// The instrument's actuators and converter, and the optical readings of the running measurement. A
/// reading is the average over the last step that took it, in detector counts, and keeps its value
/// until that step runs again. Destruction releases converter, LED, valve, pump and stirrer, in
/// this order.
class MeasurementCycle {
  public:
    /// Creates all devices and sets up the lines of stirrer and pump. A device counts as created
    /// when the object exists: what it could not open shows when it is used. False when memory runs
    /// out.
    bool Init();

    /// Opens the valve, turns the pump by two turns in 2 s and closes the valve, with a console
    /// line for each action on the valve. True when the pump moved; false, with a line, without
    /// pump or valve.
    bool Prime();

    /// Searches the pump's start position at `speed` degrees per second.
    bool doFindStartPosition(std::uint32_t speed);

    [[nodiscard]] float DarkCount() const { return darkCount_; }
    [[nodiscard]] float Reference() const { return reference_; }
    [[nodiscard]] float ReactedSample() const { return reactedSample_; }
    void SetDarkCount(float average) { darkCount_ = average; }
    void SetReference(float average) { reference_ = average; }
    void SetReactedSample(float average) { reactedSample_ = average; }

    /// The devices, lent for the time of a step; null until Init created them.
    [[nodiscard]] StepperDriver* Stirrer() { return stirrer_.get(); }
    [[nodiscard]] StepperDriverMotor* ReagentPump() { return reagentPump_.get(); }
    [[nodiscard]] ValvePWM* Valve() { return valve_.get(); }
    [[nodiscard]] PwmChannel* Led() { return led_.get(); }
    [[nodiscard]] SpiDevice* ExternalAdc() { return externalAdc_.get(); }

  private:
    void CreateDevices();
    void SetupLines();

    float darkCount_ = 0.0F;
    float reference_ = 0.0F;
    float reactedSample_ = 0.0F;
    // Declared in the reverse of the order in which they are released.
    std::unique_ptr<StepperDriver> stirrer_;
    std::unique_ptr<StepperDriverMotor> reagentPump_;
    std::unique_ptr<ValvePWM> valve_;
    std::unique_ptr<PwmChannel> led_;
    std::unique_ptr<SpiDevice> externalAdc_;
};

} // namespace tavrelin
