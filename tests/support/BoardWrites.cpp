#include "tests/support/BoardWrites.h"

#include <cstdint>
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

// "1500", or "1500.001" for a moment that is no whole millisecond.
std::string Milliseconds(const Write& write) {
    const std::string fraction = std::to_string(1000 + write.microseconds % 1000).substr(1);
    return std::to_string(write.microseconds / 1000) + (fraction == "000" ? "" : "." + fraction);
}

// The writes as `tell` tells them; empty texts are left out.
template <typename Tell>
sim::Texts WritesAsTold(const sim::SimulatedBoard& board, Tell tell) {
    sim::Texts texts;
    for (const std::string& event : board.TimedEvents()) {
        std::istringstream words(event);
        Write write;
        std::string operation;
        std::string path;
        std::string data;
        words >> write.microseconds >> write.thread >> operation >> path >> std::ws;
        std::getline(words, data);
        std::erase(data, '"');
        if (operation == "write" && path.substr(0, 11) == "/sys/class/") {
            write.text = ShortPath(path) + " " + data;
            texts.push_back(tell(write));
        }
    }
    std::erase(texts, "");
    return texts;
}

} // namespace

sim::Texts Writes(const sim::SimulatedBoard& board) {
    return WritesAsTold(board, [](const Write& write) { return write.text; });
}

sim::Texts TimedWrites(const sim::SimulatedBoard& board) {
    return WritesAsTold(board, [](const Write& write) {
        return Milliseconds(write) + " " + std::to_string(write.thread) + " " + write.text;
    });
}

sim::Texts TimedWritesOfThread(const sim::SimulatedBoard& board, unsigned thread) {
    return WritesAsTold(board, [thread](const Write& write) {
        return write.thread == thread ? Milliseconds(write) + " " + write.text : "";
    });
}

} // namespace tavrelin
