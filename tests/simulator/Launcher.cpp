#include "tests/simulator/Launcher.h"

#include "tests/support/TemporaryFolder.h"

namespace tavrelin {

std::string binary(const std::string& name) {
    return std::string(TAVRELIN_BIN_DIR) + "/" + name;
}

std::string testProgram(const std::string& name) {
    return std::string(TAVRELIN_BIN_DIR) + "/../test-programs/" + name;
}

CommandResult simulate(const Words& options, const Words& program) {
    Words command{binary("simulate"), "--io-cost", "none"};
    command.insert(command.end(), options.begin(), options.end());
    command.push_back("--");
    command.insert(command.end(), program.begin(), program.end());
    return RunCommand(command);
}

CommandResult simulateTrouble(const Words& trouble, const Words& options) {
    Words program{testProgram("troublemaker")};
    program.insert(program.end(), trouble.begin(), trouble.end());
    return simulate(options, program);
}

CommandResult simulateScenario(const std::string& toml) {
    const TemporaryFolder folder;
    WriteText(folder.File("board.toml"), toml);
    return simulateTrouble({"status", "0"}, {"--scenario", folder.File("board.toml")});
}

} // namespace tavrelin
