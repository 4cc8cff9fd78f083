#pragma once

#include "devices/StepperDriver.h"

#include <pthread.h>

#include <cstdint>

namespace tavrelin {

/// The reagent pump's motor: a stepper driver with three current-limit lines. Failures show in the
/// result and on standard output.
class StepperDriverMotor : public StepperDriver {
  public:
    explicit StepperDriverMotor(std::uint8_t channel);

    /// Claims the three current-limit lines as outputs and sets the level. Claims them even for a
    /// motor that is not ok, which then gets no level.
    void SetupCurrentLimitPins(std::uint32_t bank1, std::uint32_t bit1, std::uint32_t bank2,
                               std::uint32_t bit2, std::uint32_t bank3, std::uint32_t bit3,
                               std::uint32_t level);

    /// Levels 1 to 7 go out as a 3-bit number, lowest bit on line 1; any other drives all three
    /// low.
    bool SetCurrentLimit(std::uint32_t level);

    /// Takes the motor mutex, sets the current limit and starts the pulses (percent, Hz). A motor
    /// mutex taken here stays locked even when the rest fails: the following Brake releases it.
    bool Start(float dutyCycle, float frequency, std::uint32_t level);

    /// Holds the rotor with the lowest current and the chip enabled, and releases the motor mutex,
    /// whether held or not. Does not stop the pulses.
    bool Brake();

    /// Turns by `angleDeg` degrees (above 0) in `durationMs` milliseconds (not 0) with pulses of
    /// `dutyCycle` percent (above 0 to 100), then brakes. The motor mutex is held meanwhile, and
    /// stays locked when setting the current or running fails.
    bool MoveAngle(float angleDeg, float dutyCycle, std::uint32_t durationMs, bool busyWait);

  private:
    bool TakeMotor();
    bool MoveAndBrake(float angleDeg, float dutyCycle, std::uint32_t durationMs, bool busyWait);

    // Held by the thread that moves the motor, from Start or MoveAngle until Brake; taken before
    // the channel's mutex and released after it. Never destroyed.
    pthread_mutex_t motorMutex_{};
    PinGroup limits_;
};

} // namespace tavrelin
