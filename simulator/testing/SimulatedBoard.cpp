#include "simulator/testing/SimulatedBoard.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/board/Wiring.h"
#include "simulator/interpose/SystemCallGate.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace sim {
namespace {

RunOptions In(const RunRoot& root, RunOptions options, const Scenario& scenario) {
    if (!root.Problem().empty()) {
        std::fprintf(stderr, "simulated board: %s\n", root.Problem().c_str());
        std::abort();
    }
    options.scenario = scenario;
    options.root = root.Path();
    return options;
}

std::string Contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

/// The text that EventLog::Quoted made a data column of, with what follows the quotes.
std::string Unquoted(const std::string& data) {
    std::string text;
    for (const char character : data) {
        if (character != '"') {
            text += character;
        }
    }
    return text;
}

std::string PathOf(std::string_view device) {
    if (device == "spi") {
        return std::string(kSpiDevice);
    }
    const std::string gpio = std::string(kGpio) + "/";
    const std::string pwm = std::string(kPwmChip) + "/";
    if (device == "gpio" || device == "pwmchip0") {
        return device == "gpio" ? gpio : pwm;
    }
    return (device.substr(0, 3) == "pwm" ? pwm : gpio + "pio") + std::string(device) + "/";
}

} // namespace

SimulatedBoard::SimulatedBoard(const Scenario& scenario, const RunOptions& options)
    : simulation_(In(root_, options, scenario)) {
    simulation_.events.Keep();
    simulation_.end.how = [](Ending ending, const std::string& text) {
        const char* what = ending == Ending::Deadlock       ? "deadlock"
                           : ending == Ending::LimitReached ? "limit reached"
                                                            : "call that is not modelled";
        std::fprintf(stderr, "simulated board: %s: %s\n", what, text.c_str());
        std::abort();
    };
    system_calls::Arm();
}

SimulatedBoard::~SimulatedBoard() {
    system_calls::Disarm();
}

sim::Line& SimulatedBoard::Line(std::string_view name) {
    return Model().lines.At(Lines::Number(name).value());
}

void SimulatedBoard::SetInput(std::string_view name, bool level) {
    const unsigned number = Lines::Number(name).value();
    if (number == kHomeSensorLine) {
        Model().HoldHomeSensor(level);
    } else {
        Model().lines.SetInput(number, level);
    }
}

void SimulatedBoard::Elapse(Nanoseconds span) {
    Model().AdvanceTo(Now() + span);
}

Texts SimulatedBoard::WritesTo(std::string_view device) const {
    const std::string folder = PathOf(device);
    Texts writes;
    for (const Event& event : simulation_.events.Kept()) {
        if (event.operation != "write" || event.path.substr(0, folder.size()) != folder) {
            continue;
        }
        const std::string attribute = event.path.substr(folder.size());
        if (attribute.find('/') == std::string::npos) {
            writes.push_back(attribute + (attribute.empty() ? "" : " ") + Unquoted(event.data));
        }
    }
    return writes;
}

Texts SimulatedBoard::Events() const {
    Texts lines;
    for (const Event& event : simulation_.events.Kept()) {
        lines.push_back(event.operation + " " + event.path + " " + event.data);
    }
    return lines;
}

Texts SimulatedBoard::TimedEvents() const {
    Texts lines;
    for (const Event& event : simulation_.events.Kept()) {
        std::string line = EventLog::Line(event);
        line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

std::uint64_t SimulatedBoard::Calls(std::string_view name) const {
    const auto& counts = simulation_.kernel.calls.Made();
    const auto found = counts.find(name);
    return found == counts.end() ? 0 : found->second;
}

void SimulatedBoard::Fail(const std::string& call, const std::string& path, int error,
                          std::uint64_t occurrence) {
    Kernel().calls.faults.Add({call, path, occurrence, error, std::nullopt, false});
}

void SimulatedBoard::FailForever(const std::string& call, const std::string& path, int error,
                                 std::uint64_t occurrence) {
    Kernel().calls.faults.Add({call, path, occurrence, error, std::nullopt, true});
}

void SimulatedBoard::CutShort(const std::string& call, const std::string& path, std::uint64_t bytes,
                              std::uint64_t occurrence) {
    Kernel().calls.faults.Add({call, path, occurrence, 0, bytes, false});
}

void SimulatedBoard::ReplaceText(const std::string& path, const std::string& text) {
    Kernel().tree.Replace(path, text);
}

std::string SimulatedBoard::FileOnCard(const std::string& name) const {
    return Contents(simulation_.kernel.paths.CardFolder() + "/" + name);
}

std::string SimulatedBoard::FileBelowMountPoint(const std::string& name) const {
    return Contents(simulation_.kernel.paths.MountPointFolder() + "/" + name);
}

void SimulatedBoard::WriteFileOnCard(const std::string& name, const std::string& text) const {
    std::ofstream(simulation_.kernel.paths.CardFolder() + "/" + name, std::ios::binary) << text;
}

} // namespace sim
