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
constexpr long kGraceNanoseconds = 300'000'000;

/// The mask that the launcher was started with, which the program gets back.
sigset_t firstMask;

/// Runs in the child; tells the parent through the pipe why it could not begin.
[[noreturn]] void Become(const ChildCommand& command, int failurePipe) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    Processor::StayHere();
    sigprocmask(SIG_SETMASK, &firstMask, nullptr);
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

/// The signals that end a run, as far as nobody has this process ignore them.
sigset_t EndingSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) {
        struct sigaction present {};
        sigaction(signal, nullptr, &present);
        if (present.sa_handler != SIG_IGN) {
            sigaddset(&set, signal);
        }
    }
    return set;
}

/// Lets the program end by itself, with all that it still has to tell, for a moment at most.
ChildEnd Stop(pid_t child, const ChildCommand& command, ChildEnd::Kind kind, int value) {
    command.onStop();
    sigset_t ended;
    sigemptyset(&ended);
    sigaddset(&ended, SIGCHLD);
    const timespec grace{0, kGraceNanoseconds};
    sigtimedwait(&ended, nullptr, &grace);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return {kind, value};
}

/// The program is gone, perhaps by a signal that was meant for both.
ChildEnd Ended(int status) {
    const sigset_t ending = EndingSignals();
    const timespec now{0, 0};
    const int signal = WIFSIGNALED(status) ? sigtimedwait(&ending, nullptr, &now) : -1;
    if (signal == WTERMSIG(status)) {
        return {ChildEnd::Kind::Interrupted, signal};
    }
    return FromStatus(status);
}

ChildEnd Await(pid_t child, const ChildCommand& command, const std::function<void()>& onTick) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const double limit = command.realTimeLimit;
    const sigset_t awaited = AwaitedSignals();
    Processor processor(child);
    for (;;) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child) {
            return Ended(status);
        }
        if (limit > 0.0 && std::chrono::duration<double>(Clock::now() - start).count() > limit) {
            return Stop(child, command, ChildEnd::Kind::TimedOut, 0);
        }
        const timespec tick{0, kTickNanoseconds};
        const int signal = sigtimedwait(&awaited, nullptr, &tick);
        const bool own = command.interactive && signal == SIGINT;
        if (signal > 0 && signal != SIGCHLD && !own) {
            return Stop(child, command, ChildEnd::Kind::Interrupted, signal);
        }
        processor.Look();
        onTick();
    }
}

} // namespace

const sigset_t& AwaitedSignals() {
    static const sigset_t awaited = [] {
        sigset_t set = EndingSignals();
        sigaddset(&set, SIGCHLD);
        sigprocmask(SIG_BLOCK, &set, &firstMask);
        return set;
    }();
    return awaited;
}

ChildEnd RunChild(const ChildCommand& command, const std::function<void()>& onTick) {
    AwaitedSignals();
    int failure[2] = {-1, -1};
    if (pipe2(failure, O_CLOEXEC) != 0) {
        return {ChildEnd::Kind::NotStarted, errno};
    }
    const pid_t child = fork();
    if (child < 0) {
        return {ChildEnd::Kind::NotStarted, errno};
    }
    if (child == 0) {
        Become(command, failure[1]);
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
    return Await(child, command, onTick);
}

} // namespace sim
