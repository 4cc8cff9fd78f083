#include "tests/devices/sound/Sweep.h"

#include <algorithm>
#include <cmath>

namespace tavrelin {

namespace {

// The upper half of the 32-bit whole number, by division instead of shifts.
int UpperHalf(double wide) {
    return static_cast<int>(std::floor(std::trunc(wide) / 65536.0));
}

} // namespace

std::string TonePeriod(double frequency, std::size_t samples) {
    const double period = 1.0 / frequency;
    double phase = 0.0;
    std::string bytes;
    for (std::size_t index = 0; index < samples; ++index) {
        const double value = std::sin(phase * 6.2831854820251465 / period - 3.141592653589793);
        const int sample = UpperHalf(value * 1073741824.0);
        const int positive = sample < 0 ? sample + 65536 : sample;
        bytes += static_cast<char>(positive % 256);
        bytes += static_cast<char>(positive / 256);
        phase += 1.0 / 18000.0;
        if (period <= phase) {
            phase -= period;
        }
    }
    return bytes;
}

std::string Sweep(unsigned periods, std::size_t samplesPerPeriod) {
    std::string bytes;
    for (unsigned period = 0; period < periods; ++period) {
        bytes += TonePeriod(500.0 + 50.0 * period, samplesPerPeriod);
    }
    return bytes;
}

std::string Difference(const std::string& one, const std::string& other) {
    if (one == other) {
        return "";
    }
    const auto [at, unused] = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    return std::to_string(one.size()) + " and " + std::to_string(other.size()) +
           " bytes differ from byte " + std::to_string(at - one.begin()) + " on";
}

} // namespace tavrelin
