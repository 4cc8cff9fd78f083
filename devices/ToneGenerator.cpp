#include "devices/ToneGenerator.h"

#include "base/SaturatingCast.h"

#include <cmath>

namespace tavrelin {

namespace {

constexpr double kTwoPi = 6.2831854820251465; // rounded to single precision: part of the sound
constexpr double kPi = 3.141592653589793;
constexpr double kHalfScale = 1073741824.0; // of a 32-bit sample, whose upper half is played
constexpr double kSampleTime = 5.555555555555556e-05;

std::uint16_t Sample(double phase, double period) {
    const double value = std::sin(phase * kTwoPi / period - kPi);
    const auto wide = SaturatingCast<std::int32_t>(value * kHalfScale);
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(wide) >> 16U);
}

} // namespace

bool GenerateTone(std::uint8_t* destination, std::int32_t count, double frequency, double* phase) {
    if (destination == nullptr || phase == nullptr) {
        return false;
    }
    const double period = 1.0 / frequency;
    double now = *phase;
    for (std::int32_t index = 0; index < count; ++index) {
        const std::uint16_t sample = Sample(now, period);
        *destination++ = static_cast<std::uint8_t>(sample & 0xFFU);
        *destination++ = static_cast<std::uint8_t>(sample >> 8U);
        now += kSampleTime;
        // Once, even where a sample spans several periods: part of the sound.
        if (period <= now) {
            now -= period;
        }
    }
    *phase = now;
    return true;
}

} // namespace tavrelin
