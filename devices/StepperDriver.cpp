#include "devices/StepperDriver.h"

#include "base/Console.h"
#include "base/Sleep.h"

#include <pthread.h>

#include <array>
#include <ctime>
#include <type_traits>

namespace tavrelin {

namespace {

// One per PWM channel, held from a successful Start to the Stop that ends it; never destroyed.
std::array<pthread_mutex_t, 4> channelMutexes = {
    {PTHREAD_MUTEX_INITIALIZER, PTHREAD_MUTEX_INITIALIZER, PTHREAD_MUTEX_INITIALIZER,
     PTHREAD_MUTEX_INITIALIZER}};

bool IsValidPulse(float dutyCycle, float frequency) {
    // A duty of 0 is refused, though the channel would take it: a driver that is started steps.
    return frequency >= 1.0F && frequency <= 100000000.0F && dutyCycle > 0.0F &&
           dutyCycle <= 100.0F;
}

// Processor time equals wall time while spinning. It counts microseconds in a long that wraps after
// 72 minutes on a 32-bit board: unsigned differences, summed up, do not mind.
void SpinMilliseconds(std::uint32_t milliseconds) {
    using Ticks = std::make_unsigned_t<std::clock_t>;
    const std::uint64_t wanted = std::uint64_t{1000} * milliseconds;
    std::uint64_t elapsed = 0;
    auto last = static_cast<Ticks>(std::clock());
    while (elapsed < wanted) {
        const auto now = static_cast<Ticks>(std::clock());
        elapsed += static_cast<Ticks>(now - last);
        last = now;
    }
}

} // namespace

bool StepperDriver::Start(float dutyCycle, float frequency) {
    if (!Ok()) {
        return false;
    }
    if (!IsValidPulse(dutyCycle, frequency)) {
        PrintLine("Invalid PWM frequency or duty cycle in StepperDriver::Start");
        return false;
    }
    if (pthread_mutex_lock(&channelMutexes[Channel()]) != 0) {
        PrintLine("Stepper Driver: PWM mutex lock failed");
        return false;
    }
    // An enable line that can be written was set up, and the channel with it.
    const bool started =
        WriteEnableLine(kLevelLow) && Pwm()->SetFrequencyAndDuty(frequency, dutyCycle);
    if (!started) {
        PrintLine("Stepper Driver: PWM enable or chip enable failed");
        Stop(); // puts right what was done, and gives the mutex back
    }
    return started;
}

bool StepperDriver::Stop() {
    if (!Ok()) {
        return false;
    }
    // No pulses without an enabled chip: the motor would lose steps it has been told to take.
    const bool stopped = Pwm() != nullptr && Pwm()->Enable(false) && WriteEnableLine(kLevelHigh);
    if (!stopped) {
        PrintLine("Stepper Driver: PWM disable or chip disable failed");
    }
    if (pthread_mutex_unlock(&channelMutexes[Channel()]) != 0) {
        PrintLine("Stepper Driver: PWM mutex unlock failed");
        return false;
    }
    return stopped;
}

bool StepperDriver::Run(float dutyCycle, float frequency, std::uint32_t durationMs, bool busyWait) {
    if (durationMs == 0) {
        return true;
    }
    if (!Start(dutyCycle, frequency)) {
        return false;
    }
    if (busyWait) {
        SpinMilliseconds(durationMs);
    } else {
        SleepMilliseconds(durationMs);
    }
    return Stop();
}

} // namespace tavrelin
