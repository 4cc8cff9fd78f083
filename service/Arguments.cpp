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

} // namespace tavrelin::service
