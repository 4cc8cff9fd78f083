#include "tests/support/Command.h"

#include "tests/support/TestFolder.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrelin {

namespace {

constexpr int kNotStarted = 127;

// -1 when the program cannot be started.
pid_t Start(std::vector<std::string> command, const posix_spawn_file_actions_t* redirections) {
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    pid_t process = -1;
    const int error = ::posix_spawnp(&process, arguments.front(), redirections, nullptr,
                                     arguments.data(), environ);
    return error == 0 ? process : -1;
}

int ExitStatusOf(pid_t process) {
    int status = 0;
    if (process < 0 || ::waitpid(process, &status, 0) != process) {
        return kNotStarted;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

CommandResult RunCommand(const std::vector<std::string>& command) {
    const TestFolder folder;
    const std::string output = folder.Path("output");
    const std::string error = folder.Path("error");
    posix_spawn_file_actions_t streams{};
    ::posix_spawn_file_actions_init(&streams);
    ::posix_spawn_file_actions_addopen(&streams, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&streams, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT,
                                       0600);
    ::posix_spawn_file_actions_addopen(&streams, STDERR_FILENO, error.c_str(), O_WRONLY | O_CREAT,
                                       0600);
    const int status = ExitStatusOf(Start(command, &streams));
    ::posix_spawn_file_actions_destroy(&streams);
    return {.status = status, .output = TextOf(output), .error = TextOf(error)};
}

BusyProcess::BusyProcess() : process_(Start({"sh", "-c", "while :; do :; done"}, nullptr)) {}

BusyProcess::~BusyProcess() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ExitStatusOf(process_);
    }
}

bool BusyProcess::IsRunning() const {
    return process_ > 0 && ::waitpid(process_, nullptr, WNOHANG) == 0;
}

OneCore::OneCore() : before_() {
    ::sched_getaffinity(0, sizeof before_, &before_);
    for (int core = 0; core < CPU_SETSIZE; ++core) {
        if (CPU_ISSET(core, &before_)) {
            cpu_set_t only;
            CPU_ZERO(&only);
            CPU_SET(core, &only);
            ::sched_setaffinity(0, sizeof only, &only);
            return;
        }
    }
}

OneCore::~OneCore() {
    ::sched_setaffinity(0, sizeof before_, &before_);
}

} // namespace tavrelin
