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

// Where a child's standard streams go.
class Redirections {
  public:
    Redirections() { ::posix_spawn_file_actions_init(&actions_); }
    Redirections(const Redirections&) = delete;
    Redirections& operator=(const Redirections&) = delete;
    ~Redirections() { ::posix_spawn_file_actions_destroy(&actions_); }

    void Add(int descriptor, const std::string& path, int flags) {
        ::posix_spawn_file_actions_addopen(&actions_, descriptor, path.c_str(), flags, 0600);
    }
    [[nodiscard]] const posix_spawn_file_actions_t* Get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

// -1 when the program cannot be started.
pid_t Start(std::vector<std::string> command, const Redirections& redirections) {
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    pid_t process = -1;
    const int error = ::posix_spawnp(&process, arguments.front(), redirections.Get(), nullptr,
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
    Redirections redirections;
    redirections.Add(STDIN_FILENO, "/dev/null", O_RDONLY);
    redirections.Add(STDOUT_FILENO, output, O_WRONLY | O_CREAT);
    redirections.Add(STDERR_FILENO, error, O_WRONLY | O_CREAT);
    const int status = ExitStatusOf(Start(command, redirections));
    return {.status = status, .output = TextOf(output), .error = TextOf(error)};
}

BusyProcess::BusyProcess() : process_(Start({"sh", "-c", "while :; do :; done"}, {})) {}

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
