#include "simulator/testing/SimulatedBoard.h"

#include "simulator/board/Wiring.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace sim {
namespace {

std::string temporaryFolder() {
    std::string pattern =
        std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + "/tavrelin-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        std::perror("temporary folder for a simulated board");
        std::abort();
    }
    return pattern;
}

RunOptions withDefaults(const Scenario& scenario, const RunOptions& given,
                        const std::string& root) {
    RunOptions options = given;
    options.scenario = scenario;
    options.root = root;
    return options;
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

/// The text that EventLog::quoted made a data column of, with what follows the quotes.
std::string unquoted(const std::string& data) {
    std::string text;
    for (const char character : data) {
        if (character != '"') {
            text += character;
        }
    }
    return text;
}

std::string pathOf(std::string_view device) {
    const std::string name(device);
    if (device == "spi") {
        return "/dev/spidev32765.1";
    }
    if (device == "gpio") {
        return "/sys/class/gpio/";
    }
    if (device == "pwmchip0") {
        return "/sys/class/pwm/pwmchip0/";
    }
    return (device.substr(0, 3) == "pwm" ? "/sys/class/pwm/pwmchip0/" : "/sys/class/gpio/pio") +
           name + "/";
}

} // namespace

SimulatedBoard::SimulatedBoard(const Scenario& scenario, const RunOptions& options)
    : root_(temporaryFolder()), simulation_(withDefaults(scenario, options, root_)) {
    simulation_.events.keep();
    simulation_.end = [](Ending ending, const std::string& text) {
        const char* what = ending == Ending::deadlock       ? "deadlock"
                           : ending == Ending::limitReached ? "limit reached"
                                                            : "call that is not modelled";
        std::fprintf(stderr, "simulated board: %s: %s\n", what, text.c_str());
        std::abort();
    };
}

SimulatedBoard::~SimulatedBoard() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

Line& SimulatedBoard::line(std::string_view name) {
    return board().lines.at(Lines::number(name).value());
}

void SimulatedBoard::setInput(std::string_view name, bool level) {
    const unsigned number = Lines::number(name).value();
    if (number == homeSensorLine) {
        board().holdHomeSensor(level);
    } else {
        board().lines.setInput(number, level);
    }
}

void SimulatedBoard::elapse(Nanoseconds span) {
    board().advanceTo(now() + span);
}

Texts SimulatedBoard::writesTo(std::string_view device) const {
    const std::string folder = pathOf(device);
    Texts writes;
    for (const Event& event : simulation_.events.kept()) {
        if (event.operation != "write" || event.path.substr(0, folder.size()) != folder) {
            continue;
        }
        const std::string attribute = event.path.substr(folder.size());
        if (attribute.find('/') == std::string::npos) {
            writes.push_back(attribute + (attribute.empty() ? "" : " ") + unquoted(event.data));
        }
    }
    return writes;
}

Texts SimulatedBoard::events() const {
    Texts lines;
    for (const Event& event : simulation_.events.kept()) {
        lines.push_back(event.operation + " " + event.path + " " + event.data);
    }
    return lines;
}

Texts SimulatedBoard::timedEvents() const {
    Texts lines;
    for (const Event& event : simulation_.events.kept()) {
        std::string line = EventLog::line(event);
        line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

std::uint64_t SimulatedBoard::calls(std::string_view name) const {
    const auto& counts = simulation_.kernel.callCounts();
    const auto found = counts.find(name);
    return found == counts.end() ? 0 : found->second;
}

void SimulatedBoard::fail(const std::string& call, const std::string& path, int error,
                          std::uint64_t occurrence) {
    simulation_.faults.add({call, path, occurrence, error, std::nullopt, false});
}

void SimulatedBoard::failForever(const std::string& call, const std::string& path, int error,
                                 std::uint64_t occurrence) {
    simulation_.faults.add({call, path, occurrence, error, std::nullopt, true});
}

void SimulatedBoard::cutShort(const std::string& call, const std::string& path, std::uint64_t bytes,
                              std::uint64_t occurrence) {
    simulation_.faults.add({call, path, occurrence, 0, bytes, false});
}

void SimulatedBoard::replaceText(const std::string& path, const std::string& text) {
    kernel().sysfs().replace(path, text);
}

std::string SimulatedBoard::fileOnCard(const std::string& name) const {
    return contents(simulation_.kernel.cardFolder() + "/" + name);
}

std::string SimulatedBoard::fileBelowMountPoint(const std::string& name) const {
    return contents(simulation_.kernel.mountPointFolder() + "/" + name);
}

void SimulatedBoard::writeFileOnCard(const std::string& name, const std::string& text) const {
    std::ofstream(simulation_.kernel.cardFolder() + "/" + name, std::ios::binary) << text;
}

} // namespace sim
