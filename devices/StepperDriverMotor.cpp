#include "devices/StepperDriverMotor.h"

#include "base/Console.h"
#include "devices/Wiring.h"

namespace tavrelin {

namespace {

constexpr std::uint32_t kHighestLevel = 7;

bool MakeOutput(GpioPin& pin) {
    return pin.SetDirection(kPinOutput) && pin.SetEdge(kEdgeNone);
}

bool WriteBit(GpioPin* pin, std::uint32_t number, std::uint32_t bit) {
    return pin != nullptr && pin->Write(number >> bit & 1U);
}

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
    limitPin1_ = std::make_unique<GpioPin>(bank1, bit1);
    limitPin2_ = std::make_unique<GpioPin>(bank2, bit2);
    limitPin3_ = std::make_unique<GpioPin>(bank3, bit3);
    if (!MakeOutput(*limitPin1_) || !MakeOutput(*limitPin2_) || !MakeOutput(*limitPin3_)) {
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
    const std::uint32_t number = level <= kHighestLevel ? level : 0;
    if (!WriteBit(limitPin1_.get(), number, 0) || !WriteBit(limitPin2_.get(), number, 1) ||
        !WriteBit(limitPin3_.get(), number, 2)) {
        PrintLine("Reagent Stepper Motor: Setting current limit pin values failed");
        return false;
    }
    return true;
}

bool StepperDriverMotor::Start(float dutyCycle, float frequency, std::uint32_t level) {
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
    return SetCurrentLimit(wiring::kPumpMovingCurrent) &&
           Run(dutyCycle, StepFrequency(angleDeg, durationMs), durationMs, busyWait) && Brake();
}

} // namespace tavrelin
