#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tavrelin::service {

/// Exit statuses of tavrelin-service.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

inline int StatusOf(bool success) {
    return success ? kDone : kFailed;
}

/// What follows the command.
using Arguments = std::vector<std::string>;

/// Says in one line on standard error what is wrong with a command's arguments; answers
/// kWrongUsage.
int WrongUsage(std::string_view command, const std::string& what);

/// The same for a command that takes no arguments; nothing when it got none.
std::optional<int> UnlessEmpty(std::string_view command, const Arguments& arguments);

/// What "--for SECONDS" asks for, 1 to 3600; `otherwise` without it. Nothing when it is wrong,
/// which then has been said.
std::optional<std::uint32_t> SecondsOf(std::string_view command, const Arguments& option,
                                       std::uint32_t otherwise);

/// The text as a whole number in decimal digits, where the type has one with a leading minus;
/// nothing for any other text and for a number out of range.
template <std::integral Number>
std::optional<Number> WholeNumber(std::string_view text,
                                  Number lowest = std::numeric_limits<Number>::min(),
                                  Number highest = std::numeric_limits<Number>::max()) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end || number < lowest || number > highest) {
        return std::nullopt;
    }
    return number;
}

} // namespace tavrelin::service
