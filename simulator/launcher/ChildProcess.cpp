#include "simulator/launcher/ChildProcess.h"

#include "simulator/launcher/Processor.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sim {
namespace {

constexpr long kTickNanoseconds = 200'000'000;

/// Runs in the child; tells the parent through the pipe why it could not begin.
[[noreturn]] void Become(const ChildCommand& command, const sigset_t& oldMask, int failurePipe) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    Processor::StayHere();
    sigprocmask(SIG_SETMASK, &oldMask, nullptr);
    for (const auto& [name, value] : command.environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<std::string> texts = command.arguments;
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    execv(command.path.c_str(), arguments.data());
    const int error = errno;
    static_cast<void>(write(failurePipe, &error, sizeof error) == 0);
    _exit(127);
}

ChildEnd FromStatus(int status) {
    if (WIFSIGNALED(status)) {
        return {ChildEnd::Kind::Signalled, WTERMSIG(status)};
    }
    return {ChildEnd::Kind::Exited, WEXITSTATUS(status)};
}

ChildEnd KillAndReap(pid_t child, ChildEnd::Kind kind, int value) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return {kind, value};
}

ChildEnd Await(pid_t child, double limit, const std::function<void()>& onTick) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const sigset_t awaited = AwaitedSignals();
    Processor processor(child);
    for (;;) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child) {
            return FromStatus(status);
        }
        if (limit > 0.0 && std::chrono::duration<double>(Clock::now() - start).count() > limit) {
            return KillAndReap(child, ChildEnd::Kind::TimedOut, 0);
        }
        const timespec tick{0, kTickNanoseconds};
        const int signal = sigtimedwait(&awaited, nullptr, &tick);
        if (signal == SIGINT || signal == SIGTERM) {
            return KillAndReap(child, ChildEnd::Kind::Interrupted, signal);
        }
        processor.Look();
        onTick();
    }
}

} // namespace

sigset_t AwaitedSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGCHLD);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

ChildEnd RunChild(const ChildCommand& command, const std::function<void()>& onTick) {
    const sigset_t awaited = AwaitedSignals();
    sigset_t oldMask;
    sigprocmask(SIG_BLOCK, &awaited, &oldMask);
    int failure[2] = {-1, -1};
    if (pipe2(failure, O_CLOEXEC) != 0) {
        return {ChildEnd::Kind::NotStarted, errno};
    }
    const pid_t child = fork();
    if (child < 0) {
        return {ChildEnd::Kind::NotStarted, errno};
    }
    if (child == 0) {
        Become(command, oldMask, failure[1]);
    }
    close(failure[1]);
    int error = 0;
    const bool failed = read(failure[0], &error, sizeof error) == sizeof error;
    close(failure[0]);
    if (failed) {
        waitpid(child, nullptr, 0);
        return {ChildEnd::Kind::NotStarted, error};
    }
    if (command.onStart) {
        command.onStart();
    }
    return Await(child, command.realTimeLimit, onTick);
}

} // namespace sim
