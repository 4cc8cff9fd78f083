#include "tests/service/ServiceRun.h"

#include "tests/support/InstrumentRun.h"
#include "tests/support/Places.h"
#include "tests/support/Text.h"

#include <cstdlib>

namespace tavrelin {

namespace {

void ReplaceAll(std::string& text, const std::string& what, const std::string& with) {
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
}

// The digits that follow the words, if they are there.
std::string NumberAfter(const std::string& text, const std::string& words) {
    const std::size_t at = text.find(words);
    if (at == std::string::npos) {
        return "";
    }
    const std::size_t begin = at + words.size();
    return text.substr(begin, text.find_first_not_of("0123456789", begin) - begin);
}

std::string WithNamedProcesses(std::string text) {
    const std::string parent = NumberAfter(text, "In Parent Process: Own pid = ");
    const std::string child = NumberAfter(text, "Child pid = ");
    if (!parent.empty() && !child.empty()) {
        ReplaceAll(text, "pid = " + parent, "pid = (the program's)");
        ReplaceAll(text, "pid = " + child, "pid = (the child's)");
    }
    return text;
}

// The simulation adds a line of its own when the program's status is not 0: takes it off, and the
// program's status instead of the simulation's.
CommandResult AsTheProgramEnded(CommandResult result) {
    const std::string words = "simulate: the program ended with status ";
    const std::size_t at = result.error.rfind(words);
    if (at != std::string::npos) {
        result.status = std::atoi(result.error.c_str() + at + words.size());
        result.error.resize(at);
    }
    return result;
}

std::string Quoted(const std::string& word) {
    const bool plain = !word.empty() && word.find_first_of(" '\n") == std::string::npos;
    return plain ? word : "'" + word + "'";
}

} // namespace

CommandResult CallService(const Words& words) {
    Words command = {InBuild("bin/tavrelin-service")};
    command.insert(command.end(), words.begin(), words.end());
    return RunCommand(command);
}

SimulatedCall SimulateService(const Words& words, const std::string& board,
                              const std::string& left) {
    const RunResult run = RunInstrument(
        {.board = board, .program = "tavrelin-service", .arguments = words, .left = left});
    return {.result = AsTheProgramEnded({run.status, run.console, run.errors}),
            .events = run.events,
            .summary = run.summary,
            .card = run.card,
            .left = run.left};
}

std::string Transcript(const Words& words, const CommandResult& result) {
    std::string text = "$ tavrelin-service";
    for (const std::string& word : words) {
        text += " " + Quoted(word);
    }
    text += "\n" + WithNamedProcesses(result.output);
    for (const std::string& line : LinesOf(result.error)) {
        text += "! " + line + "\n";
    }
    return text + (result.status == 0 ? "" : "(status " + std::to_string(result.status) + ")\n");
}

std::string SimulatedTranscript(const Words& words, const std::string& board,
                                const std::string& left) {
    return Transcript(words, SimulateService(words, board, left).result);
}

} // namespace tavrelin
