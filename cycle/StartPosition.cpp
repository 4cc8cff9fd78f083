#include "cycle/StartPosition.h"

#include "base/SaturatingCast.h"
#include "base/Trace.h"
#include "cycle/HomeSensor.h"
#include "devices/Wiring.h"

#include <ctime>
#include <optional>

namespace tavrelin {

namespace {

constexpr std::int32_t kFlagSearchLimit = 1999; // ms
constexpr int kSteadyReads = 10;                // equal readings that end the debouncing

// A frequency between the two figures passes: the limit is meant to lie a little above the cap.
float SearchFrequency(std::uint32_t speed) {
    constexpr float limit = 1601.0F;
    constexpr float cap = 1600.0F;
    const float frequency = static_cast<float>(speed) / wiring::kPumpDegreesPerStep;
    return frequency > limit ? cap : frequency;
}

// Whole seconds only: 200 degrees per second gives 1000 ms, 100 give 3000 ms. At rest there is no
// limit to compute, and no pulse either.
std::int32_t RevolutionLimit(std::uint32_t speed) {
    constexpr std::uint32_t turn = 360;
    return speed == 0 || speed > turn ? 0 : static_cast<std::int32_t>(1000 * (turn / speed));
}

std::int32_t MillisecondsBetween(const timespec& start, const timespec& now) {
    const auto ofSeconds = static_cast<float>((now.tv_sec - start.tv_sec) * 1000);
    const double ofNanoseconds = static_cast<double>(now.tv_nsec - start.tv_nsec) / 1e6;
    return SaturatingCast<std::int32_t>(static_cast<double>(ofSeconds) + ofNanoseconds);
}

// Measures from its first reading on.
class SearchTimer {
  public:
    enum class Reading { Started, Elapsed, Failed };

    // Reads the wall clock; Elapsed only when an earlier reading had started the timer.
    Reading Take() {
        timespec now{};
        if (::clock_gettime(CLOCK_REALTIME, &now) != 0) {
            return Reading::Failed;
        }
        if (!start_) {
            start_ = now;
            return Reading::Started;
        }
        elapsed_ = MillisecondsBetween(*start_, now);
        return Reading::Elapsed;
    }

    [[nodiscard]] std::int32_t Elapsed() const { return elapsed_; }

  private:
    std::optional<timespec> start_;
    std::int32_t elapsed_ = 0; // ms
};

// True when the flag came in time, after the sensor had been seen without it: a pump that starts on
// the flag does not know where on it.
bool ReachFlag(HomeSensor& sensor) {
    SearchTimer timer;
    bool seenOffFlag = false;
    while (!sensor.IsStopPosition()) {
        switch (timer.Take()) {
        case SearchTimer::Reading::Started:
            break;
        case SearchTimer::Reading::Elapsed:
            if (timer.Elapsed() > kFlagSearchLimit) {
                return false;
            }
            seenOffFlag = true;
            break;
        case SearchTimer::Reading::Failed:
            seenOffFlag = false;
            break;
        }
    }
    return seenOffFlag;
}

// Without limit: a sensor that stays low, or that cannot be read, holds the search here for good.
void WaitUntilSteadilyHigh(HomeSensor& sensor) {
    for (int reads = 0; reads < kSteadyReads;) {
        reads = sensor.IsLevelHigh() ? reads + 1 : 0;
    }
}

// A clock that fails takes the limit away for as long as it does.
bool LeaveFlag(HomeSensor& sensor, std::int32_t limit) {
    SearchTimer timer;
    while (sensor.IsStopPosition()) {
        if (timer.Take() == SearchTimer::Reading::Elapsed && timer.Elapsed() >= limit) {
            return false;
        }
    }
    WaitUntilSteadilyHigh(sensor);
    return true;
}

} // namespace

bool doFindStartPosition(StepperDriverMotor* pump, std::uint32_t speed) {
    HomeSensor sensor;
    if (pump == nullptr) {
        return false;
    }
    // A pump that does not start shows in a flag that does not come.
    pump->Start(wiring::kPumpDuty, SearchFrequency(speed), wiring::kPumpMovingCurrent);
    Trace("MeasurementCycle.cpp", "doFindStartPosition", 231);
    const bool passed = ReachFlag(sensor) && LeaveFlag(sensor, RevolutionLimit(speed));
    pump->Stop(); // whatever came of it: pulses that nobody stops turn the pump for good
    pump->Brake();
    // Once more at rest: the flag may have swung back into the sensor.
    return passed && sensor.IsLevelHigh();
}

} // namespace tavrelin
