#pragma once

#include "platform/PwmChannel.h"

#include <cstdint>
#include <memory>

namespace tavrelin {

/// The sample valve: its coil is driven from a PWM channel at a fixed frequency. There is no
/// read-back of its position. Switching fails silently before Init and with a message on standard
/// output after it.
class ValvePWM {
  public:
    /// `frequency` in Hz; touches no hardware.
    ValvePWM(std::uint8_t channel, std::uint16_t frequency);
    ValvePWM(const ValvePWM&) = delete;
    ValvePWM& operator=(const ValvePWM&) = delete;
    ValvePWM(ValvePWM&&) = delete;
    ValvePWM& operator=(ValvePWM&&) = delete;
    /// Closes the valve and gives the channel back.
    ~ValvePWM() = default;

    /// Claims the channel. True even when it could not be claimed: that shows when the valve is
    /// switched.
    bool Init();

    /// Opens the valve with `dutyCycle` percent.
    bool ValveOn(float dutyCycle);
    bool ValveOff();

    [[nodiscard]] bool Initialised() const { return initialised_; }
    [[nodiscard]] std::uint8_t Channel() const { return channel_; }
    [[nodiscard]] std::uint16_t Frequency() const { return frequency_; }

  private:
    bool initialised_ = false;
    std::unique_ptr<PwmChannel> pwm_;
    std::uint8_t channel_;
    std::uint16_t frequency_;
};

} // namespace tavrelin
