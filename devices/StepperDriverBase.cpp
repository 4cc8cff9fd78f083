#include "devices/StepperDriverBase.h"

#include "base/Console.h"

#include <array>

namespace tavrelin {

namespace {

constexpr std::uint8_t kHighestChannel = 3;

} // namespace

StepperDriverBase::StepperDriverBase(std::uint8_t channel) : channel_(channel) {
    if (channel > kHighestChannel) {
        PrintLine("StepperDriverBase: Invalid PWM channel");
        channel_ = 0; // there is a mutex for it
        ok_ = false;
    }
}

void StepperDriverBase::SetupEnablePin(std::uint32_t bank, std::uint32_t bit) {
    if (!ok_) {
        return;
    }
    if (!enable_.Take(std::array{wiring::Line{bank, bit}}, kLevelHigh)) {
        ok_ = false;
        PrintLine("StepperDriverBase: Setting up enable GPIO pin failed");
        return;
    }
    // After the line, so that no pulse reaches a chip that is still enabled.
    pwm_ = std::make_unique<PwmChannel>(channel_);
}

void StepperDriverBase::SetupPins(std::uint32_t enableBank, std::uint32_t enableBit,
                                  std::uint32_t directionBank, std::uint32_t directionBit) {
    if (!ok_) {
        return;
    }
    if (!direction_.Take(std::array{wiring::Line{directionBank, directionBit}}, kLevelHigh)) {
        ok_ = false;
        PrintLine("StepperDriverBase: Setting up direction GPIO pin failed");
        return;
    }
    SetupEnablePin(enableBank, enableBit);
}

} // namespace tavrelin
