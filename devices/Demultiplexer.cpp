#include "devices/Demultiplexer.h"

#include "base/Console.h"
#include "devices/ADC.h"
#include "devices/IndicatorWiring.h"

namespace tavrelin {

namespace {

constexpr std::uint32_t kFirstOfUpperGroup = 8;
constexpr std::uint32_t kBitsOfGroup = 7;

// Channels 8 and 9 are not wired.
bool Exists(std::uint32_t channel) {
    return channel < kFirstOfUpperGroup || (channel >= 10 && channel <= 15);
}

} // namespace

bool Demultiplexer::Init(const SelectLines& lines) {
    if (select_.Take(lines, kLevelLow)) {
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
    if (!initialised_ || !select_.Write(bits) || !SetAnalogSwitch(analogSwitch)) {
        PrintLine("Demultiplexer::SelectChannel - Setting mux channel failed");
        return false;
    }
    return true;
}

bool Demultiplexer::SetAnalogSwitch(GpioPin* analogSwitch) {
    bool set = false;
    if (analogSwitch != nullptr) {
        // Held from here on, even if it cannot be set: the reset is then what puts it right.
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
    // The converter first, so that nothing is switched where nothing can be read.
    ADC adc;
    const bool read = adc.Open(wiring::kDemultiplexerAdcInput) &&
                      SelectChannel(channel, analogSwitch) && adc.ReadVoltage(voltage) &&
                      ResetAnalogSwitchState();
    if (!read) {
        PrintLine("Demultiplexer::ReadVoltage failed!");
    }
    return read;
}

} // namespace tavrelin
