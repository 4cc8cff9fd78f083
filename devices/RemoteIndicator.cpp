#include "devices/RemoteIndicator.h"

#include "base/Console.h"
#include "devices/Demultiplexer.h"
#include "devices/IndicatorWiring.h"

#include <cstddef>

namespace tavrelin {

namespace {

using Levels = std::array<std::uint8_t, 6>;

constexpr std::uint32_t kIdleColor = 0;
constexpr std::uint32_t kTestColor = 1;

// Lines 1 to 6 of each colour code.
constexpr std::array<Levels, 11> kColors = {{
    {1, 1, 1, 1, 1, 1}, // 0
    {0, 1, 0, 1, 0, 0}, // 1
    {0, 0, 0, 1, 1, 0}, // 2
    {0, 0, 1, 1, 0, 0}, // 3
    {1, 1, 0, 0, 0, 0}, // 4
    {1, 0, 0, 0, 1, 0}, // 5
    {1, 0, 1, 0, 0, 0}, // 6
    {0, 1, 0, 0, 0, 1}, // 7
    {0, 0, 0, 0, 1, 1}, // 8
    {0, 0, 0, 0, 0, 0}, // 9
    {0, 0, 0, 0, 0, 1}, // 10
}};

// The levels as a number, line 1 in its lowest bit; above the table all lines are low.
constexpr std::uint32_t LevelsOf(std::uint32_t code) {
    std::uint32_t number = 0;
    for (std::size_t led = 0; code < kColors.size() && led < kColors[code].size(); ++led) {
        number |= std::uint32_t{kColors[code][led]} << led;
    }
    return number;
}

// Single precision throughout, in this order: the length's last digits depend on it.
float CableLength(float v0, float v2) {
    return ((v0 * 5.0F) - 3.023F) / (v2 / 7.87F) / 0.0572F;
}

} // namespace

bool RemoteIndicator::Init(const LedLines& lines) {
    if (leds_.Take(lines)) {
        initialised_ = true;
        initialised_ = SetLEDColors(kIdleColor);
    }
    if (!initialised_) {
        PrintLine("RemoteIndicator::Init Configuring remote LED driver GPIO failed");
    }
    return initialised_;
}

bool RemoteIndicator::SetLEDColors(std::uint32_t code) {
    if (!initialised_ || !leds_.Write(LevelsOf(code))) {
        PrintLine("RemoteIndicator::SetLEDColors failed!");
        return false;
    }
    return true;
}

bool RemoteIndicator::CalculateCableLength(float& length) {
    if (!SetLEDColors(kTestColor) || !MeasureCable(length)) {
        PrintLine("RemoteIndicator::CalculateCableLength failed!");
        return false;
    }
    return true;
}

// Under the test colour, so the indicator is initialised. A demultiplexer that could not be set up
// shows in the readings, which then fail.
bool RemoteIndicator::MeasureCable(float& length) {
    Demultiplexer demultiplexer; // its lines are held for the measurement only
    demultiplexer.Init(wiring::kDemultiplexerSelect);
    GpioPin* analogSwitch = leds_.At(wiring::kAnalogSwitchLed);
    float v2 = 0.0F;
    float v0 = 0.0F;
    if (!demultiplexer.ReadVoltage(wiring::kCableV2Channel, analogSwitch, v2) ||
        !demultiplexer.ReadVoltage(wiring::kCableV0Channel, analogSwitch, v0)) {
        return false;
    }
    length = CableLength(v0, v2);
    return SetLEDColors(kIdleColor);
}

} // namespace tavrelin
