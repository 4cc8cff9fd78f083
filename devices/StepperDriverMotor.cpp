#include "devices/StepperDriverMotor.h"

#include "base/Console.h"
#include "devices/Wiring.h"

#include <array>

namespace tavrelin {

namespace {

constexpr std::uint32_t kHighestLevel = 7;

// Single precision throughout, in this order: the nanoseconds written depend on it.
float StepFrequency(float angleDeg, std::uint32_t durationMs) {
    const float seconds = static_cast<float>(durationMs) / 1000.0F;
    const float steps = angleDeg / 360.0F * wiring::kPumpStepsPerTurn;
    return 1.0F / (seconds / steps);
}

} // namespace

StepperDriverMotor::StepperDriverMotor(std::uint8_t channel) : StepperDriver(channel) {
    if (pthread_mutex_init(&motorMutex_, nullptr) != 0) {
        MarkUnusable();
    }
}

void StepperDriverMotor::SetupCurrentLimitPins(std::uint32_t bank1, std::uint32_t bit1,
                                               std::uint32_t bank2, std::uint32_t bit2,
                                               std::uint32_t bank3, std::uint32_t bit3,
                                               std::uint32_t level) {
    if (!limits_.Take(std::array{wiring::Line{bank1, bit1}, wiring::Line{bank2, bit2},
                                 wiring::Line{bank3, bit3}})) {
        MarkUnusable();
        PrintLine("Setting current limit GPIO pin(s) to outputs failed");
        return;
    }
    if (!SetCurrentLimit(level)) {
        MarkUnusable();
    }
}

bool StepperDriverMotor::SetCurrentLimit(std::uint32_t level) {
    if (!Ok()) {
        return false;
    }
    if (!limits_.Write(level <= kHighestLevel ? level : 0)) {
        PrintLine("Reagent Stepper Motor: Setting current limit pin values failed");
        return false;
    }
    return true;
}

bool StepperDriverMotor::Start(float dutyCycle, float frequency, std::uint32_t level) {
    // The motor's mutex comes before the channel's, here and wherever both are held.
    const bool started =
        Ok() && TakeMotor() && SetCurrentLimit(level) && StepperDriver::Start(dutyCycle, frequency);
    if (!started) {
        PrintLine("StepperDriverMotor: Start operation failed");
    }
    return started;
}

bool StepperDriverMotor::Brake() {
    bool braked = false;
    if (Ok()) {
        // The mutex goes whatever comes before: this is what frees a motor after a failed start.
        const bool limited = SetCurrentLimit(wiring::kPumpBrakedCurrent);
        const bool enabled = limited && WriteEnableLine(kLevelLow);
        const bool unlocked = pthread_mutex_unlock(&motorMutex_) == 0;
        braked = enabled && unlocked;
    }
    if (!braked) {
        PrintLine("StepperDriverMotor: Brake operation failed");
    }
    return braked;
}

bool StepperDriverMotor::MoveAngle(float angleDeg, float dutyCycle, std::uint32_t durationMs,
                                   bool busyWait) {
    const bool allowed =
        Ok() && angleDeg > 0.0F && dutyCycle > 0.0F && dutyCycle <= 100.0F && durationMs != 0;
    if (!allowed || !TakeMotor() || !MoveAndBrake(angleDeg, dutyCycle, durationMs, busyWait)) {
        PrintLine("StepperDriverMotor::MoveAngle failed!");
        return false;
    }
    return true;
}

bool StepperDriverMotor::TakeMotor() {
    return pthread_mutex_lock(&motorMutex_) == 0;
}

bool StepperDriverMotor::MoveAndBrake(float angleDeg, float dutyCycle, std::uint32_t durationMs,
                                      bool busyWait) {
    // Run leaves the chip disabled and the rotor free; the brake enables it again to hold it.
    return SetCurrentLimit(wiring::kPumpMovingCurrent) &&
           Run(dutyCycle, StepFrequency(angleDeg, durationMs), durationMs, busyWait) && Brake();
}

} // namespace tavrelin
