#include "simulator/board/AnalogFrontEnd.h"

#include "simulator/board/Wiring.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace sim {
namespace {

// The cable's own figures: a supply of 3.023 V behind a divider by 5, a lamp resistor of 7.87 ohms,
// and 0.0572 ohms for each unit of length.
constexpr double supply = 3.023;
constexpr double divider = 5.0;
constexpr double lampResistor = 7.87;
constexpr double ohmsPerLength = 0.0572;

} // namespace

bool AnalogFrontEnd::showsTestColour() const {
    constexpr std::array<bool, 6> testColour{false, true, false, true, false, false};
    for (std::size_t pin = 0; pin < testColour.size(); ++pin) {
        if (!lines_.drives(indicatorLines[pin], testColour[pin])) {
            return false;
        }
    }
    return true;
}

unsigned AnalogFrontEnd::selectedSignal() const {
    unsigned signal = 0;
    for (std::size_t bit = 0; bit < multiplexerLines.size(); ++bit) {
        signal |= (lines_.drives(multiplexerLines[bit], true) ? 1U : 0U) << bit;
    }
    return lines_.drives(analogSwitchLine, true) ? signal : signal + 8;
}

double AnalogFrontEnd::voltage(int input) const {
    if (input != multiplexedInput) {
        return direct.at(static_cast<std::size_t>(input));
    }
    const unsigned signal = selectedSignal();
    const double current = lampVoltage / lampResistor;
    if (signal == 2 && showsTestColour()) {
        return lampVoltage;
    }
    if (signal == 0 && showsTestColour()) {
        return (supply + current * cableLength * ohmsPerLength) / divider;
    }
    return signals.at(signal);
}

long long AnalogFrontEnd::rawCount(int input) const {
    const double perCount = std::strtod(scale.c_str(), nullptr) / 1024.0;
    return perCount == 0.0 ? 0 : std::llround(voltage(input) / perCount);
}

} // namespace sim
