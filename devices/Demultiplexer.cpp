#include "devices/Demultiplexer.h"

#include "base/Console.h"
#include "devices/ADC.h"
#include "devices/IndicatorWiring.h"

#include <algorithm>
#include <cstddef>

namespace tavrelin {

namespace {

constexpr std::uint32_t kFirstOfUpperGroup = 8;
constexpr std::uint32_t kBitsOfGroup = 7;

// Channels 8 and 9 are not wired.
bool Exists(std::uint32_t channel) {
    return channel < kFirstOfUpperGroup || (channel >= 10 && channel <= 15);
}

bool MakeLowOutput(GpioPin& pin) {
    return pin.SetDirection(kPinOutput) && pin.SetEdge(kEdgeNone) && pin.Write(kLevelLow);
}

} // namespace

Demultiplexer::~Demultiplexer() {
    ReleasePins();
}

bool Demultiplexer::Init(const SelectLines& lines) {
    ReleasePins();
    ClaimPins(lines);
    if (ConfigurePins()) {
        initialised_ = true;
    }
    if (!initialised_) {
        PrintLine("Demultiplexer::Init Configuring demultiplexer driver GPIO failed");
    }
    return initialised_;
}

bool Demultiplexer::SelectChannel(std::uint32_t channel, GpioPin* analogSwitch) {
    channel_ = channel;
    std::uint32_t bits = channel & kBitsOfGroup;
    if (!Exists(channel)) {
        PrintLine("Demultiplexer::SelectChannel - Invalid channel");
        bits = 0;
    }
    if (!initialised_ || !WriteSelectBits(bits) || !SetAnalogSwitch(analogSwitch)) {
        PrintLine("Demultiplexer::SelectChannel - Setting mux channel failed");
        return false;
    }
    return true;
}

bool Demultiplexer::SetAnalogSwitch(GpioPin* analogSwitch) {
    bool set = false;
    if (analogSwitch != nullptr) {
        analogSwitch_ = analogSwitch;
        savedSwitchLevel_ = analogSwitch->Read();
        const std::uint32_t level = channel_ < kFirstOfUpperGroup ? kLevelHigh : kLevelLow;
        set = savedSwitchLevel_ <= kLevelHigh && analogSwitch->Write(level);
    }
    if (!set) {
        PrintLine("Demultiplexer::SetAnalogSwitch: failed!");
    }
    return set;
}

bool Demultiplexer::ResetAnalogSwitchState() {
    if (analogSwitch_ == nullptr || !analogSwitch_->Write(savedSwitchLevel_)) {
        PrintLine("Demultiplexer::ResetAnalogSwitchState: failed!");
        return false;
    }
    analogSwitch_ = nullptr;
    return true;
}

bool Demultiplexer::ReadVoltage(std::uint32_t channel, GpioPin* analogSwitch, float& voltage) {
    ADC adc;
    const bool read = adc.Open(wiring::kDemultiplexerAdcInput) &&
                      SelectChannel(channel, analogSwitch) && adc.ReadVoltage(voltage) &&
                      ResetAnalogSwitchState();
    if (!read) {
        PrintLine("Demultiplexer::ReadVoltage failed!");
    }
    return read;
}

void Demultiplexer::ClaimPins(const SelectLines& lines) {
    for (std::size_t bit = 0; bit < lines.size(); ++bit) {
        selectPins_[bit] = std::make_unique<GpioPin>(lines[bit].bank, lines[bit].bit);
    }
}

void Demultiplexer::ReleasePins() {
    for (std::unique_ptr<GpioPin>& pin : selectPins_) {
        pin.reset();
    }
}

// Whether the lines could be claimed shows here.
bool Demultiplexer::ConfigurePins() {
    return std::all_of(selectPins_.begin(), selectPins_.end(),
                       [](const auto& pin) { return MakeLowOutput(*pin); });
}

bool Demultiplexer::WriteSelectBits(std::uint32_t bits) {
    bool written = true;
    for (std::size_t bit = 0; written && bit < selectPins_.size(); ++bit) {
        written = selectPins_[bit]->Write(bits >> bit & 1U);
    }
    return written;
}

} // namespace tavrelin
