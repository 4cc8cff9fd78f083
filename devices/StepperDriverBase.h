#pragma once

#include "devices/PinGroup.h"
#include "platform/PwmChannel.h"

#include <cstdint>
#include <memory>

namespace tavrelin {

/// Step/direction driver chip behind one PWM channel (the step pulses), an enable line (low
/// enables) and, where wired, a direction line: what it owns and how it is set up. Any set-up step
/// that fails clears `ok` for good, says so on standard output, and every later operation fails.
class StepperDriverBase {
  public:
    /// `channel` 0 to 3; any other counts as channel 0 of a driver that is not ok.
    explicit StepperDriverBase(std::uint8_t channel);
    StepperDriverBase(const StepperDriverBase&) = delete;
    StepperDriverBase& operator=(const StepperDriverBase&) = delete;
    StepperDriverBase(StepperDriverBase&&) = delete;
    StepperDriverBase& operator=(StepperDriverBase&&) = delete;
    /// Releases channel, enable line and direction line, in this order.
    ~StepperDriverBase() = default;

    /// Claims the enable line, leaves the chip disabled, and claims the PWM channel. What others
    /// have exported serves as well, and is given back with the rest: a claim that fails shows only
    /// where the line or, at the next start, the channel cannot be used.
    void SetupEnablePin(std::uint32_t bank, std::uint32_t bit);

    /// Claims the direction line and drives it high, then goes on as SetupEnablePin.
    void SetupPins(std::uint32_t enableBank, std::uint32_t enableBit, std::uint32_t directionBank,
                   std::uint32_t directionBit);

    /// Whether every set-up step so far succeeded.
    [[nodiscard]] bool Ok() const { return ok_; }
    [[nodiscard]] std::uint8_t Channel() const { return channel_; }

  protected:
    void MarkUnusable() { ok_ = false; }

    /// Drives the enable line: kLevelLow enables the chip. False when the line was never set up.
    bool WriteEnableLine(std::uint32_t level) { return enable_.Write(level); }
    /// Null until the enable line was set up.
    [[nodiscard]] PwmChannel* Pwm() { return pwm_.get(); }

  private:
    bool ok_ = true;
    std::uint8_t channel_;
    // Declared in the reverse of the order in which they are released.
    PinGroup direction_;
    PinGroup enable_;
    std::unique_ptr<PwmChannel> pwm_;
};

} // namespace tavrelin
