#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tavrelin {

/// What a run of a shipping program on the simulated board is like. A run ends with the program or
/// at the first limit; 0 is no limit.
struct Conditions {
    std::string scenario = {}; ///< a file in tests/system/scenarios/, without its ending
    std::string board = {};    ///< or the scenario's text; neither: the board as it should be
    std::string program = "tavrelin";
    std::vector<std::string> arguments = {};
    int measurements = 0;
    int steps = 0;
    int calls = 0;
    int boardTime = 0; ///< seconds
    std::uint64_t seed = 1;
    std::string start = "2026-03-07 09:00:00"; ///< of the clock, in UTC
    std::string ioCost = "none";
    bool waves = false;    ///< whether RunResult tells them
    std::string left = {}; ///< what earlier programs left on the board, as RunResult tells it
};

/// Exit statuses of `simulate`; see its help.
inline constexpr int kEndedAsAsked = 0;
inline constexpr int kDeadlock = 11;

struct RunResult {
    int status = 0;                                ///< of `simulate`
    std::string console;                           ///< standard output
    std::string errors;                            ///< standard error
    std::string events;                            ///< what happened on the board
    std::string waves;                             ///< the board's signals as value changes
    std::string summary;                           ///< figures of the run
    std::string left;                              ///< what outlives the program
    std::map<std::string, std::string> card;       ///< the card's files by their names
    std::map<std::string, std::string> mountPoint; ///< those that lie below the card's place

    /// The log of a day; empty when there is none.
    [[nodiscard]] std::string Log(const std::string& date = "2026-03-07") const;

    bool operator==(const RunResult&) const = default;
};

RunResult RunInstrument(const Conditions& conditions);

} // namespace tavrelin
