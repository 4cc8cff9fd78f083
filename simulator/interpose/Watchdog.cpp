#include "simulator/interpose/Watchdog.h"

#include "simulator/interpose/Gate.h"
#include "simulator/interpose/SystemCallGate.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <dlfcn.h>
#include <string>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

namespace sim::watchdog {
namespace {

constexpr int kPatience = 5; // looks, one a second

std::atomic<unsigned> calls{0};
unsigned callsSeen = 0;
int looksInVain = 0;

/// "name (file+0x12)" of an instruction, as far as it has a name.
std::string PlaceOf(void* instruction) {
    Dl_info found{};
    if (dladdr(instruction, &found) == 0) {
        return "an unknown place";
    }
    char place[256];
    std::snprintf(place, sizeof place, "%s%s%s+0x%zx",
                  found.dli_sname != nullptr ? found.dli_sname : "",
                  found.dli_sname != nullptr ? " in " : "", found.dli_fname,
                  static_cast<std::size_t>(static_cast<char*>(instruction) -
                                           static_cast<char*>(found.dli_fbase)));
    return place;
}

void Look(int signal, siginfo_t* /*information*/, void* context) {
    if (const unsigned made = calls; made != callsSeen) {
        callsSeen = made;
        looksInVain = 0;
        return;
    }
    if (++looksInVain < kPatience) {
        return;
    }
    const Gate gate;
    if (!gate) {
        return;
    }
    if (const int running = gate->scheduler.CurrentTask(); running != gettid()) {
        callsSeen = calls;
        syscall(SYS_tgkill, getpid(), running, signal); // only that one knows its place
        return;
    }
    gate->end(Ending::Spinning,
              "thread " + std::to_string(gate->scheduler.Current()) + " at " +
                  PlaceOf(reinterpret_cast<void*>(
                      static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP])));
}

} // namespace

void Begin() {
    system_calls::Handle(kWatchdogSignal, Look, 0);
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = kWatchdogSignal;
    timer_t timer{};
    const itimerspec everySecond{{1, 0}, {1, 0}};
    if (timer_create(CLOCK_PROCESS_CPUTIME_ID, &event, &timer) == 0) {
        timer_settime(timer, 0, &everySecond, nullptr);
    }
}

void CallMade() {
    calls.store(calls.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

} // namespace sim::watchdog
