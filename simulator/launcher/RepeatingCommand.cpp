#include "simulator/launcher/RepeatingCommand.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <sstream>
#include <string_view>
#include <utility>

namespace sim {
namespace {

/// A word of a command as a shell takes it.
std::string ShellWord(const std::string& text) {
    const auto plain = [](char character) {
        return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
               std::string_view("_./:=+,@%-").find(character) != std::string_view::npos;
    };
    if (!text.empty() && std::all_of(text.begin(), text.end(), plain)) {
        return text;
    }
    std::string word = "'";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\'' || byte < ' ' || byte == 0x7F) {
            char digits[16];
            std::snprintf(digits, sizeof digits, "'$'\\%03o''", byte);
            word += digits;
        } else {
            word += character;
        }
    }
    return word + "'";
}

} // namespace

std::string RepeatingCommand(const LauncherOptions& options) {
    const RunLimits& limits = options.run.limits;
    std::ostringstream command;
    command << "simulate --scenario bench.toml --seed " << options.run.seed << " --start "
            << ShellWord(WallClock::Text(options.run.startTime)) << " --io-cost "
            << (options.run.ioCosts ? "board" : "none");
    for (const auto& [option, limit] :
         {std::pair{" --measurements ", limits.measurements}, std::pair{" --steps ", limits.steps},
          std::pair{" --calls ", limits.calls}}) {
        if (limit) {
            command << option << *limit;
        }
    }
    if (limits.boardTime != kNever) {
        char span[32];
        std::snprintf(span, sizeof span, "%.6f", static_cast<double>(limits.boardTime) / 1e9);
        command << " --board-time " << span;
    }
    if (limits.stall != kDefaultStall) {
        command << " --stall " << (limits.stall == kNever ? 0 : limits.stall / 1'000'000'000);
    }
    command << " --real-time 0 --";
    for (const std::string& word : options.program) {
        command << " " << ShellWord(word);
    }
    return command.str();
}

} // namespace sim
