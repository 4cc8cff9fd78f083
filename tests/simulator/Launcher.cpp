#include "tests/simulator/Launcher.h"

#include "tests/support/Places.h"

namespace tavrelin {

std::string Binary(const std::string& name) {
    return InBuild("bin/" + name);
}

std::string testProgram(const std::string& name) {
    return InBuild("test-programs/" + name);
}

CommandResult Simulate(const Words& options, const Words& program) {
    Words command{Binary("simulate"), "--io-cost", "none"};
    command.insert(command.end(), options.begin(), options.end());
    command.push_back("--");
    command.insert(command.end(), program.begin(), program.end());
    return RunCommand(command);
}

CommandResult SimulateTrouble(const Words& trouble, const Words& options) {
    Words program{testProgram("troublemaker")};
    program.insert(program.end(), trouble.begin(), trouble.end());
    return Simulate(options, program);
}

} // namespace tavrelin
