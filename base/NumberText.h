#pragma once

#include <cstdint>
#include <string>

namespace tavrelin {

/// How numbers are spelled on the console and in the log, whatever the locale. NaN is "nan" without
/// a sign on every processor, infinity "inf" or "-inf".

/// Six significant digits, in exponent form where that is shorter: 0.107906, 20, 3e+06.
std::string GeneralText(double number);

/// Three digits after the point: -0.000, 975.389. At least 4 characters: NaN has a space before it.
std::string FixedText(double number);

/// Filled with leading zeros to at least `width` digits; for numbers that are not negative.
std::string ZeroPaddedText(int number, std::size_t width);

/// Filled with leading spaces to at least `width` characters.
std::string RightAlignedText(std::string text, std::size_t width);

} // namespace tavrelin
