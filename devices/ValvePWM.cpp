#include "devices/ValvePWM.h"

#include "base/Console.h"

namespace tavrelin {

ValvePWM::ValvePWM(std::uint8_t channel, std::uint16_t frequency)
    : channel_(channel), frequency_(frequency) {}

bool ValvePWM::Init() {
    // The channel's own outcome is not asked for: it shows when the valve is switched.
    pwm_ = std::make_unique<PwmChannel>(channel_);
    initialised_ = true;
    return true;
}

bool ValvePWM::ValveOn(float dutyCycle) {
    if (!initialised_) {
        return false;
    }
    if (!pwm_->SetFrequencyAndDuty(static_cast<float>(frequency_), dutyCycle)) {
        PrintLine("ValvePWM::ValveOn: valve did not successfully turn on");
        return false;
    }
    return true;
}

bool ValvePWM::ValveOff() {
    if (!initialised_) {
        return false;
    }
    if (!pwm_->Enable(false)) {
        PrintLine("ValvePWM::ValveOff: error turning valve off");
        return false;
    }
    return true;
}

} // namespace tavrelin
