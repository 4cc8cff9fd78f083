#include "tests/support/InstrumentRun.h"

#include "tests/support/Command.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"

namespace tavrelin {

namespace {

// Seconds of real time after which a run that hangs is given up.
constexpr const char* kPatience = "100";

std::string ScenarioFile(const Conditions& conditions, const TestFolder& folder) {
    if (!conditions.scenario.empty()) {
        return InCheckout("tests/system/scenarios/") + conditions.scenario + ".toml";
    }
    const std::string file = folder.Path("scenario.toml");
    WriteText(file, conditions.board);
    return file;
}

void AddLimit(std::vector<std::string>& command, const char* option, int limit) {
    if (limit != 0) {
        command.insert(command.end(), {option, std::to_string(limit)});
    }
}

} // namespace

std::string RunResult::Log(const std::string& date) const {
    const auto found = card.find(date + "_logfile.csv");
    return found == card.end() ? std::string() : found->second;
}

RunResult RunInstrument(const Conditions& conditions) {
    const TestFolder folder;
    const std::string root = folder.Path("root");
    const std::string events = folder.Path("events");
    const std::string left = folder.Path("left");
    WriteText(left, conditions.left);
    const std::string binaries = InBuild("bin");
    std::vector<std::string> command = {binaries + "/simulate",
                                        "--scenario",
                                        ScenarioFile(conditions, folder),
                                        "--seed",
                                        std::to_string(conditions.seed),
                                        "--start",
                                        conditions.start,
                                        "--io-cost",
                                        conditions.ioCost,
                                        "--root",
                                        root,
                                        "--events",
                                        events,
                                        "--summary",
                                        folder.Path("summary"),
                                        "--board",
                                        left,
                                        "--real-time",
                                        kPatience};
    AddLimit(command, "--measurements", conditions.measurements);
    AddLimit(command, "--steps", conditions.steps);
    AddLimit(command, "--calls", conditions.calls);
    AddLimit(command, "--board-time", conditions.boardTime);
    if (conditions.waves) {
        command.insert(command.end(), {"--vcd", folder.Path("waves")});
    }
    command.insert(command.end(), {"--", binaries + "/" + conditions.program});
    command.insert(command.end(), conditions.arguments.begin(), conditions.arguments.end());
    const CommandResult result = RunCommand(command);
    return {.status = result.status,
            .console = result.output,
            .errors = result.error,
            .events = TextOf(events),
            .waves = TextOf(folder.Path("waves")),
            .summary = TextOf(folder.Path("summary")),
            .left = TextOf(left),
            .card = FilesIn(root + "/card"),
            .mountPoint = FilesIn(root + "/rootfs/mnt/sd-card")};
}

} // namespace tavrelin
