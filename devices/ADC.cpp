#include "devices/ADC.h"

#include "platform/AttributeFile.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <optional>
#include <sstream>

namespace tavrelin {

namespace {

constexpr const char* kDevice = "/sys/bus/iio/devices/iio:device0/";
constexpr std::int32_t kHighestChannel = 11;
constexpr std::size_t kPathBuffer = 100;
// 1/1024 and not 1/1000: this is how the callers' figures were calibrated.
constexpr float kUnit = 0.0009765625F;

// What formatted extraction leaves of a text, whether it succeeds or not.
template <typename Number>
Number Extract(const std::string& word) {
    Number number{};
    std::istringstream(word) >> number;
    return number;
}

} // namespace

bool ADC::Open(std::int32_t channel) {
    if (channel > kHighestChannel) {
        return false;
    }
    if (!AttributeDirectoryExists(kDevice)) {
        std::cerr << "ADC: device does not exist\n";
        return false;
    }
    channel_ = channel;
    return true;
}

std::string ADC::RawPath() const {
    std::array<char, kPathBuffer> path{};
    std::snprintf(path.data(), path.size(), "%sin_voltage%d_raw", kDevice, channel_);
    return path.data();
}

std::string ADC::ReferencePath() {
    return std::string(kDevice) + "in_voltage_scale";
}

bool ADC::ReadRaw(std::int32_t& raw) const {
    if (channel_ < 0) {
        return false;
    }
    const std::optional<std::string> word = ReadAttributeWord(RawPath());
    if (!word) {
        std::cerr << "ADC: can't read raw counts\n";
        return false;
    }
    raw = Extract<std::int32_t>(*word);
    return true;
}

bool ADC::ReadReference(float& reference) const {
    if (channel_ < 0) {
        return false;
    }
    const std::optional<std::string> word = ReadAttributeWord(ReferencePath());
    if (!word) {
        std::cerr << "ADC: can't read the reference\n";
        return false;
    }
    reference = Extract<float>(*word);
    return true;
}

bool ADC::ReadVoltage(float& voltage) const {
    std::int32_t raw = 0;
    float reference = 0.0F;
    if (!ReadRaw(raw) || !ReadReference(reference)) {
        return false;
    }
    // Single precision throughout, in this order: the callers' last digits depend on it.
    voltage = static_cast<float>(raw) * reference * kUnit;
    return true;
}

} // namespace tavrelin
