#include "base/NumberText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace tavrelin {

namespace {

std::string Spell(double number, std::chars_format format, int precision) {
    if (std::isnan(number)) {
        return "nan"; // to_chars shows a sign that processors set differently
    }
    // The largest double has 309 digits before the point.
    std::array<char, 320> text{};
    char* const begin = text.data();
    return {begin, std::to_chars(begin, begin + text.size(), number, format, precision).ptr};
}

// Longer texts are never cut: a wrong width is better than a wrong number.
std::string Padded(std::string text, std::size_t width, char filling) {
    if (text.size() < width) {
        text.insert(0, width - text.size(), filling);
    }
    return text;
}

} // namespace

std::string GeneralText(double number) {
    return Spell(number, std::chars_format::general, 6);
}

std::string FixedText(double number) {
    return RightAlignedText(Spell(number, std::chars_format::fixed, 3), 4);
}

std::string ZeroPaddedText(int number, std::size_t width) {
    return Padded(std::to_string(number), width, '0');
}

std::string RightAlignedText(std::string text, std::size_t width) {
    return Padded(std::move(text), width, ' ');
}

} // namespace tavrelin
