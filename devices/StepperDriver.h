#pragma once

#include "devices/StepperDriverBase.h"

#include <cstdint>

namespace tavrelin {

/// A stepper driver as it is run: started, stopped, or run for a time. Each PWM channel has one
/// process-wide mutex: the thread whose Start succeeded holds it until that thread's Stop, so that
/// two drivers never pulse one channel at once. Failures show in the result and on standard output.
class StepperDriver : public StepperDriverBase {
  public:
    using StepperDriverBase::StepperDriverBase;

    /// Takes the channel's mutex, enables the chip and starts pulses of `dutyCycle` percent (above
    /// 0 to 100) at `frequency` Hz (1 to 100000000). Holds the mutex only on success.
    bool Start(float dutyCycle, float frequency);

    /// Stops the pulses, disables the chip and releases the channel's mutex, whether held or not.
    bool Stop();

    /// Starts, waits `durationMs` milliseconds, stops. The wait spins on processor time with
    /// `busyWait`, else sleeps. A duration of 0 is a success that touches nothing.
    bool Run(float dutyCycle, float frequency, std::uint32_t durationMs, bool busyWait);
};

} // namespace tavrelin
