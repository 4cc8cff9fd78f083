#include "tests/log/LogProgram.h"

#include "tests/support/Places.h"

namespace tavrelin {

CommandResult RunLog(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), InBuild("bin/tavrelin-log"));
    return RunCommand(arguments);
}

} // namespace tavrelin
