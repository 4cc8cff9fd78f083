#include "simulator/board/AnalogFrontEnd.h"

#include "simulator/board/Wiring.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace sim {
namespace {

// The cable's own figures: a supply of 3.023 V behind a divider by 5, a lamp resistor of 7.87 ohms,
// and 0.0572 ohms for each unit of length.
constexpr double kSupply = 3.023;
constexpr double kDivider = 5.0;
constexpr double kLampResistor = 7.87;
constexpr double kOhmsPerLength = 0.0572;

} // namespace

bool AnalogFrontEnd::ShowsTestColour() const {
    constexpr std::array<bool, 6> testColour{false, true, false, true, false, false};
    for (std::size_t pin = 0; pin < testColour.size(); ++pin) {
        if (!lines_.Drives(kIndicatorLines[pin], testColour[pin])) {
            return false;
        }
    }
    return true;
}

unsigned AnalogFrontEnd::SelectedSignal() const {
    unsigned signal = 0;
    for (std::size_t bit = 0; bit < kMultiplexerLines.size(); ++bit) {
        signal |= (lines_.Drives(kMultiplexerLines[bit], true) ? 1U : 0U) << bit;
    }
    return lines_.Drives(kAnalogSwitchLine, true) ? signal : signal + 8;
}

double AnalogFrontEnd::Voltage(int input) const {
    if (input != kMultiplexedInput) {
        return direct.at(static_cast<std::size_t>(input));
    }
    const unsigned signal = SelectedSignal();
    const double current = lampVoltage / kLampResistor;
    if (signal == 2 && ShowsTestColour()) {
        return lampVoltage;
    }
    if (signal == 0 && ShowsTestColour()) {
        return (kSupply + current * cableLength * kOhmsPerLength) / kDivider;
    }
    return signals.at(signal);
}

long long AnalogFrontEnd::RawCount(int input) const {
    const double perCount = std::strtod(scale.c_str(), nullptr) / 1024.0;
    return perCount == 0.0 ? 0 : std::llround(Voltage(input) / perCount);
}

} // namespace sim
