#pragma once

#include "tests/support/Command.h"

#include <map>
#include <string>
#include <vector>

namespace tavrelin {

using Words = std::vector<std::string>;

/// The words after `tavrelin-service`, run on this machine itself.
CommandResult CallService(const Words& words);

/// The same on a simulated board, and what it left behind.
struct SimulatedCall {
    CommandResult result; ///< the program's own
    std::string events;
    std::string summary;
    std::map<std::string, std::string> card; ///< the card's files by their names
    std::string left;                        ///< what outlives the program on the board
};

/// `board` is the scenario's text; empty: the board as it should be. `left` is what earlier
/// programs left on it.
SimulatedCall SimulateService(const Words& words, const std::string& board = "",
                              const std::string& left = "");

/// What a person sees who types the words: the command, standard output, standard error with "! "
/// before each line, and a status other than 0. Process numbers are told by whose they are.
std::string Transcript(const Words& words, const CommandResult& result);

/// The transcript of a call on a simulated board.
std::string SimulatedTranscript(const Words& words, const std::string& board = "",
                                const std::string& left = "");

} // namespace tavrelin
