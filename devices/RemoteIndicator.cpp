#include "devices/RemoteIndicator.h"

#include "base/Console.h"
#include "devices/Demultiplexer.h"
#include "devices/IndicatorWiring.h"

#include <algorithm>
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
constexpr Levels kDark = {0, 0, 0, 0, 0, 0};

// Single precision throughout, in this order: the length's last digits depend on it.
float CableLength(float v0, float v2) {
    return ((v0 * 5.0F) - 3.023F) / (v2 / 7.87F) / 0.0572F;
}

} // namespace

RemoteIndicator::~RemoteIndicator() {
    ReleasePins();
}

bool RemoteIndicator::Init(const LedLines& lines) {
    ReleasePins();
    ClaimPins(lines);
    if (ConfigurePins()) {
        initialised_ = true;
        initialised_ = SetLEDColors(kIdleColor);
    }
    if (!initialised_) {
        PrintLine("RemoteIndicator::Init Configuring remote LED driver GPIO failed");
    }
    return initialised_;
}

bool RemoteIndicator::SetLEDColors(std::uint32_t code) {
    const Levels& levels = code < kColors.size() ? kColors[code] : kDark;
    bool shown = initialised_;
    for (std::size_t led = 0; shown && led < levels.size(); ++led) {
        shown = ledPins_[led]->Write(levels[led]);
    }
    if (!shown) {
        PrintLine("RemoteIndicator::SetLEDColors failed!");
    }
    return shown;
}

bool RemoteIndicator::CalculateCableLength(float& length) {
    if (!SetLEDColors(kTestColor) || !MeasureCable(length)) {
        PrintLine("RemoteIndicator::CalculateCableLength failed!");
        return false;
    }
    return true;
}

// A demultiplexer that could not be set up shows in the readings, which then fail.
bool RemoteIndicator::MeasureCable(float& length) {
    Demultiplexer demultiplexer;
    demultiplexer.Init(wiring::kDemultiplexerSelect);
    GpioPin* analogSwitch = initialised_ ? ledPins_[wiring::kAnalogSwitchLed].get() : nullptr;
    float v2 = 0.0F;
    float v0 = 0.0F;
    if (!demultiplexer.ReadVoltage(wiring::kCableV2Channel, analogSwitch, v2) ||
        !demultiplexer.ReadVoltage(wiring::kCableV0Channel, analogSwitch, v0)) {
        return false;
    }
    length = CableLength(v0, v2);
    return SetLEDColors(kIdleColor);
}

void RemoteIndicator::ClaimPins(const LedLines& lines) {
    for (std::size_t led = 0; led < lines.size(); ++led) {
        ledPins_[led] = std::make_unique<GpioPin>(lines[led].bank, lines[led].bit);
    }
}

void RemoteIndicator::ReleasePins() {
    for (std::unique_ptr<GpioPin>& pin : ledPins_) {
        pin.reset();
    }
}

// Whether the lines could be claimed shows here.
bool RemoteIndicator::ConfigurePins() {
    return std::all_of(ledPins_.begin(), ledPins_.end(), [](const auto& pin) {
        return pin->SetDirection(kPinOutput) && pin->SetEdge(kEdgeNone);
    });
}

} // namespace tavrelin
