// Commands for single lines of the parallel-I/O controller.

#include "base/Console.h"
#include "devices/Wiring.h"
#include "platform/GpioPin.h"
#include "platform/MappedRegisters.h"
#include "service/Commands.h"
#include "service/StopSignal.h"

#include <iostream>

namespace tavrelin::service {

namespace {

// "B18"; nothing for what is no line.
std::optional<wiring::Line> LineOf(std::string_view name) {
    constexpr std::string_view ports = "ABCD";
    const std::size_t bank = name.empty() ? std::string_view::npos : ports.find(name.front());
    const auto bit = bank == std::string_view::npos
                         ? std::nullopt
                         : WholeNumber<std::uint32_t>(name.substr(1), 0, 31);
    if (!bit) {
        return std::nullopt;
    }
    return wiring::Line{static_cast<std::uint32_t>(bank), *bit};
}

int PrintLevel(const std::string& line, std::uint32_t level) {
    PrintLine(line + ": " + std::to_string(level));
    return kDone;
}

} // namespace

int RegisterCommand(const Arguments& arguments) {
    const auto line = arguments.empty() ? std::nullopt : LineOf(arguments.front());
    const auto wanted =
        arguments.size() == 2 ? WholeNumber<std::uint32_t>(arguments.back(), 0, 1) : std::nullopt;
    if (!line || arguments.size() != (wanted ? 2U : 1U)) {
        return WrongUsage("register", "takes one LINE, A0 to D31, and at most one LEVEL, 0 or 1");
    }
    if (wanted && !WriteMappedPin(line->bank, line->bit, *wanted)) {
        return kFailed;
    }
    // What the line has become, not what was written: only an output follows.
    const std::uint32_t level = ReadMappedPin(line->bank, line->bit);
    return level == kLevelError ? kFailed : PrintLevel(arguments.front(), level);
}

int WaitEdgeCommand(const Arguments& arguments) {
    constexpr std::uint32_t waitSeconds = 10;
    constexpr std::uint32_t millisecondsPerSecond = 1000;
    const auto line = arguments.empty() ? std::nullopt : LineOf(arguments.front());
    if (!line) {
        return WrongUsage("wait-edge", "takes one LINE, A0 to D31");
    }
    const auto seconds =
        SecondsOf("wait-edge", Arguments(arguments.begin() + 1, arguments.end()), waitSeconds);
    if (!seconds) {
        return kWrongUsage;
    }
    // Asked first, because a pin gives its line back at its end, whoever took it.
    if (GpioPin::IsTaken(line->bank, line->bit)) {
        std::cerr << "tavrelin-service wait-edge: " + arguments.front() +
                         " is taken; stop the instrument first\n";
        return kFailed;
    }
    CatchStopSignals(); // they end the wait, after which the line is given back
    GpioPin pin(line->bank, line->bit, kPinInputWithEdge, kEdgeBoth);
    const std::uint32_t level =
        pin.Ok() ? pin.WaitForEdge(static_cast<std::int32_t>(*seconds * millisecondsPerSecond))
                 : kLevelError;
    if (level == kLevelLow || level == kLevelHigh) {
        return PrintLevel(arguments.front(), level);
    }
    std::cerr << "tavrelin-service wait-edge: no edge of " + arguments.front() + "\n";
    return kFailed;
}

} // namespace tavrelin::service
