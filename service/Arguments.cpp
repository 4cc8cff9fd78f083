#include "service/Arguments.h"

#include <iostream>

namespace tavrelin::service {

int WrongUsage(std::string_view command, const std::string& what) {
    const std::string name = "tavrelin-service " + std::string(command);
    std::cerr << name + ": " + what + "; see " + name + " --help\n";
    return kWrongUsage;
}

std::optional<int> UnlessEmpty(std::string_view command, const Arguments& arguments) {
    if (arguments.empty()) {
        return std::nullopt;
    }
    return WrongUsage(command, "takes no arguments, but got '" + arguments.front() + "'");
}

std::optional<std::uint32_t> SecondsOf(std::string_view command, const Arguments& option,
                                       std::uint32_t otherwise) {
    constexpr std::uint32_t longest = 3600;
    if (option.empty()) {
        return otherwise;
    }
    const auto seconds = option.size() == 2 && option.front() == "--for"
                             ? WholeNumber<std::uint32_t>(option.back(), 1, longest)
                             : std::nullopt;
    if (!seconds) {
        WrongUsage(command,
                   "--for takes one whole number of seconds from 1 to " + std::to_string(longest));
    }
    return seconds;
}

} // namespace tavrelin::service
