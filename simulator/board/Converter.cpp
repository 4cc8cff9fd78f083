#include "simulator/board/Converter.h"

#include <algorithm>

namespace sim {

void Converter::receive(Nanoseconds now, std::span<const std::uint8_t> wire) {
    command_ = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        command_ = (command_ << 8U) | (i < wire.size() ? wire[i] : 0U);
    }
    startedAt_ = now;
    shift_.clear();
    shifted_ = 0;
}

void Converter::send(Nanoseconds now, std::span<std::uint8_t> wire) {
    for (std::uint8_t& byte : wire) {
        if (shifted_ == shift_.size()) {
            const std::uint32_t word = nextWord(now);
            shift_ = {static_cast<std::uint8_t>(word >> 24U),
                      static_cast<std::uint8_t>(word >> 16U), static_cast<std::uint8_t>(word >> 8U),
                      static_cast<std::uint8_t>(word)};
            shifted_ = 0;
        }
        byte = shift_[shifted_++];
    }
}

std::uint32_t Converter::nextWord(Nanoseconds now) {
    if (!words_.empty()) {
        const std::uint32_t word = words_.front();
        words_.pop_front();
        return word;
    }
    if (startedAt_ == never || now - startedAt_ < conversionTime || !detector) {
        return command_;
    }
    return resultWord(detector(now));
}

std::uint32_t Converter::resultWord(std::int32_t reading) {
    const std::int32_t held = std::clamp(reading, -largestReading - 1, largestReading);
    const std::uint32_t sign = held < 0 ? 0U : 1U << 24U;
    return (sign | (static_cast<std::uint32_t>(held) & 0xFFFFFFU)) << 5U;
}

} // namespace sim
