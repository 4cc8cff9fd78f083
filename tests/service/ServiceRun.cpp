#include "tests/service/ServiceRun.h"

#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <cstdlib>

namespace tavrelin {

namespace {

// Seconds of real time after which a call that hangs is given up.
constexpr const char* kPatience = "60";

Words ServiceCommand(const Words& words) {
    Words command = {InBuild("bin/tavrelin-service")};
    command.insert(command.end(), words.begin(), words.end());
    return command;
}

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
    return RunCommand(ServiceCommand(words));
}

SimulatedCall SimulateService(const Words& words, const std::string& board) {
    const TestFolder folder;
    WriteText(folder.Path("board.toml"), board);
    Words command = {InBuild("bin/simulate"),
                     "--scenario",
                     folder.Path("board.toml"),
                     "--io-cost",
                     "none",
                     "--real-time",
                     kPatience,
                     "--root",
                     folder.Path("root"),
                     "--events",
                     folder.Path("events"),
                     "--summary",
                     folder.Path("summary"),
                     "--"};
    const Words service = ServiceCommand(words);
    command.insert(command.end(), service.begin(), service.end());
    return {.result = AsTheProgramEnded(RunCommand(command)),
            .events = TextOf(folder.Path("events")),
            .summary = TextOf(folder.Path("summary")),
            .card = FilesIn(folder.Path("root/card"))};
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

std::string SimulatedTranscript(const Words& words, const std::string& board) {
    return Transcript(words, SimulateService(words, board).result);
}

} // namespace tavrelin
