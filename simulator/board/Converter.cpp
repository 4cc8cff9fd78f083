#include "simulator/board/Converter.h"

#include <algorithm>

namespace sim {

void Converter::Receive(Nanoseconds now, std::span<const std::uint8_t> wire) {
    command_ = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        command_ = (command_ << 8U) | (i < wire.size() ? wire[i] : 0U);
    }
    startedAt_ = now;
    shift_.clear();
    shifted_ = 0;
    if (onCommand) {
        onCommand(command_);
    }
}

void Converter::Send(Nanoseconds now, std::span<std::uint8_t> wire) {
    for (std::uint8_t& byte : wire) {
        if (shifted_ == shift_.size()) {
            const std::uint32_t word = NextWord(now);
            if (onWord) {
                onWord(word);
            }
            shift_ = {static_cast<std::uint8_t>(word >> 24U),
                      static_cast<std::uint8_t>(word >> 16U), static_cast<std::uint8_t>(word >> 8U),
                      static_cast<std::uint8_t>(word)};
            shifted_ = 0;
        }
        byte = shift_[shifted_++];
    }
}

std::uint32_t Converter::NextWord(Nanoseconds now) {
    if (!words_.empty()) {
        const std::uint32_t word = words_.front();
        words_.pop_front();
        return word;
    }
    if (startedAt_ == kNever || now - startedAt_ < kConversionTime || !detector) {
        return command_;
    }
    return ResultWord(detector(now));
}

std::int32_t Converter::Reading(std::uint32_t word) {
    const auto low = static_cast<std::int32_t>((word >> 5U) & 0xFFFFFFU);
    return (word >> 29U & 1U) != 0 ? low : low - (1 << 24);
}

std::uint32_t Converter::ResultWord(std::int32_t reading) {
    const std::int32_t held = std::clamp(reading, -kLargestReading - 1, kLargestReading);
    const std::uint32_t sign = held < 0 ? 0U : 1U << 24U;
    return (sign | (static_cast<std::uint32_t>(held) & 0xFFFFFFU)) << 5U;
}

} // namespace sim
