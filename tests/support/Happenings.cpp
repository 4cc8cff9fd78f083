#include "tests/support/Happenings.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tavrelin {

namespace {

std::string ShortPath(const std::string& path) {
    static const std::array<std::pair<std::string, std::string>, 6> names = {{
        {"/sys/class/gpio/pio", ""},
        {"/sys/class/gpio/", "gpio/"},
        {"/sys/class/pwm/pwmchip0/pwm", "pwm"},
        {"/sys/class/pwm/pwmchip0/", "pwmchip0/"},
        {"/mnt/sd-card/", "card/"},
        {"/dev/spidev32765.1", "spi"},
    }};
    for (const auto& [from, to] : names) {
        if (path.rfind(from, 0) == 0) {
            return to + path.substr(from.size());
        }
    }
    return path;
}

} // namespace

std::string ShortOperation(const std::string& line) {
    const std::size_t path = line.find(' ') + 1;
    const std::size_t data = line.find(' ', path);
    return line.substr(0, path) + ShortPath(line.substr(path, data - path)) + line.substr(data);
}

sim::Texts Happenings(const sim::SimulatedBoard& board) {
    sim::Texts happenings;
    for (const std::string& event : board.TimedEvents()) {
        const std::string line = event.substr(event.find(' ') + 1);
        const std::string thread = line.substr(0, line.find(' '));
        happenings.push_back((thread == "0" ? "board: " : "thread " + thread + ": ") +
                             ShortOperation(line.substr(thread.size() + 1)));
    }
    return happenings;
}

sim::Texts Deeds(const sim::SimulatedBoard& board) {
    sim::Texts deeds = Happenings(board);
    std::erase_if(deeds, [](const std::string& happening) {
        return happening.find(": stat ") != std::string::npos ||
               happening.find(": setmntent ") != std::string::npos;
    });
    return deeds;
}

int CountOf(const sim::SimulatedBoard& board, const std::string& text) {
    const sim::Texts happenings = Happenings(board);
    return static_cast<int>(
        std::count_if(happenings.begin(), happenings.end(), [&](const std::string& happening) {
            return happening.find(text) != std::string::npos;
        }));
}

} // namespace tavrelin
