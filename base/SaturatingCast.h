#pragma once

#include <cmath>
#include <concepts>
#include <limits>

namespace tavrelin {

/// The number truncated towards zero; one out of range gives the nearest end of the range, NaN
/// gives 0. That is what the board's processor does; others leave it undefined, so every conversion
/// of a floating-point number to an integer goes through here.
template <std::integral To, std::floating_point From>
To SaturatingCast(From number) {
    using Limits = std::numeric_limits<To>;
    // One past the largest value is a power of two and therefore exact in From; the largest is not.
    constexpr From above = From{2} * static_cast<From>(To{1} << (Limits::digits - 1));
    if (std::isnan(number)) {
        return 0;
    }
    if (number >= above) {
        return Limits::max();
    }
    if (number <= static_cast<From>(Limits::min())) {
        return Limits::min();
    }
    return static_cast<To>(number);
}

} // namespace tavrelin
