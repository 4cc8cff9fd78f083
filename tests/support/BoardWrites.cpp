#include "tests/support/BoardWrites.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <sstream>

namespace tavrelin {

namespace {

struct Write {
    std::uint64_t microseconds = 0;
    unsigned thread = 0;
    std::string text;
};

// "/sys/class/gpio/pioB15/value" is "B15 value", "/sys/class/pwm/pwmchip0/export" is "pwmchip0
// export".
std::string ShortPath(const std::string& path) {
    const std::size_t attribute = path.rfind('/');
    const std::size_t folder = path.rfind('/', attribute - 1) + 1;
    const std::string name = path.substr(folder, attribute - folder);
    const bool line = name.substr(0, 3) == "pio";
    return (line ? name.substr(3) : name) + " " + path.substr(attribute + 1);
}

std::optional<Write> AsWrite(const std::string& event) {
    std::istringstream words(event);
    Write write;
    std::string operation;
    std::string path;
    std::string data;
    words >> write.microseconds >> write.thread >> operation >> path >> std::ws;
    std::getline(words, data);
    if (operation != "write" || path.substr(0, 11) != "/sys/class/") {
        return std::nullopt;
    }
    std::erase(data, '"');
    write.text = ShortPath(path) + " " + data;
    return write;
}

std::vector<Write> AllWrites(const sim::SimulatedBoard& board) {
    std::vector<Write> writes;
    for (const std::string& event : board.TimedEvents()) {
        if (const std::optional<Write> write = AsWrite(event)) {
            writes.push_back(*write);
        }
    }
    return writes;
}

// "1500", or "1500.001" for a moment that is no whole millisecond.
std::string Milliseconds(const Write& write) {
    const std::string fraction = std::to_string(1000 + write.microseconds % 1000).substr(1);
    return std::to_string(write.microseconds / 1000) + (fraction == "000" ? "" : "." + fraction);
}

} // namespace

sim::Texts Writes(const sim::SimulatedBoard& board) {
    sim::Texts texts;
    for (const Write& write : AllWrites(board)) {
        texts.push_back(write.text);
    }
    return texts;
}

sim::Texts TimedWrites(const sim::SimulatedBoard& board) {
    sim::Texts texts;
    for (const Write& write : AllWrites(board)) {
        texts.push_back(Milliseconds(write) + " " + std::to_string(write.thread) + " " +
                        write.text);
    }
    return texts;
}

sim::Texts TimedWritesOfThread(const sim::SimulatedBoard& board, unsigned thread) {
    sim::Texts texts;
    for (const Write& write : AllWrites(board)) {
        if (write.thread == thread) {
            texts.push_back(Milliseconds(write) + " " + write.text);
        }
    }
    return texts;
}

} // namespace tavrelin
