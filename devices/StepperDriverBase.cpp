#include "devices/StepperDriverBase.h"

#include "base/Console.h"

namespace tavrelin {

namespace {

constexpr std::uint8_t kHighestChannel = 3;

bool MakeHighOutput(GpioPin& pin) {
    return pin.SetDirection(kPinOutput) && pin.SetEdge(kEdgeNone) && pin.Write(kLevelHigh);
}

} // namespace

StepperDriverBase::StepperDriverBase(std::uint8_t channel) : channel_(channel) {
    if (channel > kHighestChannel) {
        PrintLine("StepperDriverBase: Invalid PWM channel");
        channel_ = 0;
        ok_ = false;
    }
}

void StepperDriverBase::SetupEnablePin(std::uint32_t bank, std::uint32_t bit) {
    if (!ok_) {
        return;
    }
    enablePin_ = std::make_unique<GpioPin>(bank, bit);
    if (!MakeHighOutput(*enablePin_)) {
        ok_ = false;
        PrintLine("StepperDriverBase: Setting up enable GPIO pin failed");
        return;
    }
    pwm_ = std::make_unique<PwmChannel>(channel_);
}

void StepperDriverBase::SetupPins(std::uint32_t enableBank, std::uint32_t enableBit,
                                  std::uint32_t directionBank, std::uint32_t directionBit) {
    if (!ok_) {
        return;
    }
    directionPin_ = std::make_unique<GpioPin>(directionBank, directionBit);
    if (!MakeHighOutput(*directionPin_)) {
        ok_ = false;
        PrintLine("StepperDriverBase: Setting up direction GPIO pin failed");
        return;
    }
    SetupEnablePin(enableBank, enableBit);
}

bool StepperDriverBase::WriteEnableLine(std::uint32_t level) {
    return enablePin_ != nullptr && enablePin_->Write(level);
}

} // namespace tavrelin
