#include "simulator/interpose/ProgramSignals.h"

#include "simulator/interpose/SystemCall.h"
#include "simulator/interpose/SystemCallGate.h"
#include "simulator/run/RunReport.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

namespace sim {
namespace program_signals {
namespace {

using Handler = void (*)(int, siginfo_t*, void*);

/// As the kernel takes it.
struct Action {
    Handler handler;
    unsigned long flags;
    void* restorer;
    std::uint64_t mask;
};

constexpr std::size_t kSignals = 65;
Action actions[kSignals]; ///< the program's own, by number

thread_local std::uint64_t deferred = 0;

std::uint64_t Bit(int signal) {
    return std::uint64_t{1} << (signal - 1);
}

/// Stands in for each handler of the program. What comes in the middle of the simulation waits,
/// blocked, until the thread is back in the program.
void OnSignal(int signal, siginfo_t* information, void* context) {
    if (system_calls::IsInside()) {
        auto* mask =
            reinterpret_cast<std::uint64_t*>(&static_cast<ucontext_t*>(context)->uc_sigmask);
        *mask |= Bit(signal);
        deferred |= Bit(signal);
        constexpr std::size_t filled = 48; // of it by the kernel, which takes no rubbish back
        siginfo_t again{};
        std::memcpy(&again, information, filled);
        syscall(SYS_rt_tgsigqueueinfo, getpid(), gettid(), signal, &again);
        return;
    }
    const char before = system_calls::Shut();
    actions[signal].handler(signal, information, context);
    system_calls::GoOn(before);
}

bool IsHandler(Handler handler) {
    const auto value = reinterpret_cast<std::uintptr_t>(handler);
    return value > 1; // SIG_DFL and SIG_IGN
}

} // namespace

std::uint64_t TakeDeferred() {
    const std::uint64_t taken = deferred;
    deferred = 0;
    return taken;
}

std::uint64_t Granted(std::uint64_t mask) {
    return mask & ~(Bit(SIGSYS) | Bit(kWatchdogSignal));
}

} // namespace program_signals

namespace answers {

using namespace program_signals;

long SignalAction(Trap& trap) {
    const int signal = trap.Int(0);
    const auto* wanted = trap.As<const Action*>(1);
    auto* old = trap.As<Action*>(2);
    if (signal == SIGSYS) {
        if (wanted != nullptr) {
            trap.Refuse(" of SIGSYS, by which the gate works");
        }
        *old = {};
        return 0;
    }
    Action given{};
    if (wanted != nullptr) {
        given = *wanted;
        given.mask = Granted(given.mask);
        given.handler = IsHandler(given.handler) ? OnSignal : given.handler;
    }
    Action before{};
    const long error = Trap::Pass(SYS_rt_sigaction,
                                  {signal, wanted != nullptr ? reinterpret_cast<long>(&given) : 0,
                                   reinterpret_cast<long>(&before), trap.arguments[3]});
    if (error != 0) {
        return error;
    }
    if (old != nullptr) {
        *old = before;
        old->handler = before.handler == OnSignal ? actions[signal].handler : before.handler;
    }
    if (wanted != nullptr) {
        actions[signal] = *wanted;
    }
    return 0;
}

long SignalMask(Trap& trap) {
    const auto* wanted = trap.As<const std::uint64_t*>(1);
    const std::uint64_t before = trap.blocked;
    if (wanted != nullptr) {
        const std::uint64_t mask = Granted(*wanted);
        switch (trap.Int(0)) {
        case SIG_BLOCK:
            trap.blocked |= mask;
            break;
        case SIG_UNBLOCK:
            trap.blocked &= ~mask;
            break;
        case SIG_SETMASK:
            trap.blocked = mask;
            break;
        default:
            return -EINVAL;
        }
    }
    if (trap.As<std::uint64_t*>(2) != nullptr) {
        *trap.As<std::uint64_t*>(2) = before;
    }
    return 0;
}

long Suspend(Trap& trap) {
    const bool pause = trap.call.number == SYS_pause;
    const std::uint64_t mask = Granted(pause ? trap.blocked : *trap.As<const std::uint64_t*>(0));
    if (Simulation::OfThisThread() != nullptr && trap.simulation.scheduler.Alive() > 1) {
        trap.Refuse(", which waits for what is neither board nor time");
    }
    return Trap::Pass(SYS_rt_sigsuspend, {reinterpret_cast<long>(&mask), sizeof mask});
}

long Kill(Trap& trap) {
    constexpr int cancellation = 32; // the C library's own signal
    if (trap.Int(2) == cancellation) {
        trap.Refuse(" for pthread_cancel");
    }
    return trap.Pass();
}

} // namespace answers
} // namespace sim
