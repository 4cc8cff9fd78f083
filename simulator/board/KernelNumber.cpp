#include "simulator/board/KernelNumber.h"

#include <cctype>
#include <cerrno>
#include <charconv>
#include <limits>

namespace sim {
namespace {

/// The base that the digits' begin tells; a prefix is taken off where a digit follows.
int TakeBase(std::string_view& digits) {
    if (digits.size() < 2 || digits[0] != '0') {
        return 10;
    }
    if (digits.size() > 2 && (digits[1] == 'x' || digits[1] == 'X') &&
        std::isxdigit(static_cast<unsigned char>(digits[2])) != 0) {
        digits.remove_prefix(2);
        return 16;
    }
    return 8;
}

int Magnitude(std::string_view digits, std::uint64_t most, std::uint64_t& number) {
    const int base = TakeBase(digits);
    const char* const all = digits.data() + digits.size();
    const auto [end, error] = std::from_chars(digits.data(), all, number, base);
    if (error == std::errc::result_out_of_range) {
        return ERANGE;
    }
    if (error != std::errc{} || end != all) {
        return EINVAL;
    }
    return number > most ? ERANGE : 0;
}

template <typename Number>
int Unsigned(std::string_view text, Number& number) {
    text = WithoutNewline(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    std::uint64_t magnitude = 0;
    const int error = Magnitude(text, std::numeric_limits<Number>::max(), magnitude);
    if (error == 0) {
        number = static_cast<Number>(magnitude);
    }
    return error;
}

} // namespace

std::string_view WithoutNewline(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    if (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    return text;
}

int KernelNumber(std::string_view text, std::uint32_t& number) {
    return Unsigned(text, number);
}

int KernelNumber(std::string_view text, std::uint64_t& number) {
    return Unsigned(text, number);
}

int KernelNumber(std::string_view text, std::int32_t& number) {
    text = WithoutNewline(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    std::uint64_t magnitude = 0;
    const std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    const int error = Magnitude(text, negative ? most + 1 : most, magnitude);
    if (error == 0) {
        const auto value = static_cast<std::int64_t>(magnitude);
        number = static_cast<std::int32_t>(negative ? -value : value);
    }
    return error;
}

} // namespace sim
