// What the board answers to system calls that wait, and that read a clock: on board time. What
// waits for something else than board, time and other threads of the program goes on in real time,
// where nobody else of the program stands still meanwhile.

#include "simulator/interpose/BoardClock.h"
#include "simulator/interpose/SystemCall.h"
#include "simulator/interpose/ThreadWaits.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/futex.h>
#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <vector>

namespace sim::answers {
namespace {

constexpr Nanoseconds kPerSecond = 1'000'000'000;

board_clock::Span SpanOf(const timespec& time) {
    return {time.tv_sec, time.tv_nsec};
}

timespec TimeOf(Nanoseconds time) {
    return {static_cast<time_t>(time / kPerSecond), static_cast<long>(time % kPerSecond)};
}

/// The end of a span that begins now; a null one never ends.
Nanoseconds Deadline(const Trap& trap, const timespec* span) {
    const Nanoseconds now = trap.simulation.timeline.Now();
    const Nanoseconds length = span != nullptr ? board_clock::Length(SpanOf(*span)) : kNever;
    return length >= kNever - now ? kNever : now + length;
}

bool IsAlone(const Trap& trap) {
    return trap.simulation.scheduler.Alive() == 1;
}

[[noreturn]] void RefuseToWait(const Trap& trap) {
    trap.Refuse(", which waits for what is neither board nor time");
}

long SleepFor(const Trap& trap, int clock, bool absolute, const timespec* span, timespec* rest) {
    if (span == nullptr) {
        return -EFAULT;
    }
    Nanoseconds left = 0;
    int error = 0;
    board_clock::SleepOn(trap.simulation, clock, absolute, SpanOf(*span), left, error);
    if (error != 0 && error != EINVAL && !absolute && rest != nullptr) {
        *rest = TimeOf(left);
    }
    return -error;
}

/// True while processes that the program has started may run, which they do in real time.
bool HasChildren() {
    siginfo_t information{};
    return Trap::Pass(SYS_waitid, {P_ALL, 0, reinterpret_cast<long>(&information),
                                   WEXITED | WNOHANG | WNOWAIT, 0}) == 0;
}

/// Looks at files of this machine: how many have news, or a negated errno. They get theirs in real
/// time; without a process that could give them some, board time passes instead.
long PollHere(const Trap& trap, pollfd* files, std::size_t count, Nanoseconds deadline) {
    const auto look = [&](long timeout) {
        return Trap::Pass(SYS_poll,
                          {reinterpret_cast<long>(files), static_cast<long>(count), timeout});
    };
    const long ready = look(0);
    if (ready != 0 || deadline <= trap.simulation.timeline.Now()) {
        return ready;
    }
    if (!IsAlone(trap)) {
        RefuseToWait(trap);
    }
    if (deadline == kNever) {
        return look(-1);
    }
    if (HasChildren()) {
        const long given = look((deadline - trap.simulation.timeline.Now()) / 1'000'000);
        if (given != 0) {
            return given;
        }
    }
    trap.simulation.timeline.SleepUntil(deadline, "the end of a poll");
    return look(0);
}

long PollUntil(const Trap& trap, pollfd* files, std::size_t count, Nanoseconds deadline) {
    if (count == 0) {
        const Nanoseconds now = trap.simulation.timeline.Now();
        trap.simulation.events.Add("sleep", "-", std::to_string((deadline - now) / 1'000) + " us");
        trap.simulation.timeline.SleepUntil(deadline, "the end of its sleep");
        return 0;
    }
    const bool board = std::any_of(files, files + count,
                                   [&](const pollfd& one) { return trap.Board().Owns(one.fd); });
    if (!board) {
        return PollHere(trap, files, count, deadline);
    }
    const Nanoseconds now = trap.simulation.timeline.Now();
    return trap.Board().Poll(
        files, count, deadline == kNever ? -1 : static_cast<int>((deadline - now) / 1'000'000));
}

/// The sets of a select in the form of poll, and back.
class Sets {
  public:
    explicit Sets(const Trap& trap) {
        for (int number = 0; number < trap.Int(0); ++number) {
            short events = 0;
            for (std::size_t which = 0; which < kEvents.size(); ++which) {
                const auto* set = trap.As<fd_set*>(which + 1);
                events = static_cast<short>(
                    events | (set != nullptr && FD_ISSET(number, set) ? kEvents[which] : 0));
            }
            if (events != 0) {
                files.push_back({number, events, 0});
            }
        }
    }

    long TellIn(const Trap& trap) const {
        long ready = 0;
        for (const pollfd& file : files) {
            for (std::size_t which = 0; which < kEvents.size(); ++which) {
                auto* set = trap.As<fd_set*>(which + 1);
                if (set == nullptr || !FD_ISSET(file.fd, set)) {
                    continue;
                }
                if ((file.revents & (kEvents[which] | (which < 2 ? POLLERR | POLLHUP : 0))) != 0) {
                    ++ready;
                } else {
                    FD_CLR(file.fd, set);
                }
            }
        }
        return ready;
    }

    std::vector<pollfd> files;

  private:
    static constexpr std::array<short, 3> kEvents{POLLIN, POLLOUT, POLLPRI};
};

long SelectUntil(const Trap& trap, Nanoseconds deadline) {
    Sets sets(trap);
    const long ready = PollUntil(trap, sets.files.data(), sets.files.size(), deadline);
    return ready < 0 ? ready : sets.TellIn(trap);
}

} // namespace

long Sleep(Trap& trap) {
    return SleepFor(trap, CLOCK_MONOTONIC, false, trap.As<const timespec*>(0),
                    trap.As<timespec*>(1));
}
long SleepUntil(Trap& trap) {
    return SleepFor(trap, trap.Int(0), (trap.Int(1) & TIMER_ABSTIME) != 0,
                    trap.As<const timespec*>(2), trap.As<timespec*>(3));
}

long Clock(Trap& trap) {
    const int clock = trap.Int(0);
    if (clock < 0 || clock == CLOCK_PROCESS_CPUTIME_ID || clock == CLOCK_THREAD_CPUTIME_ID) {
        return trap.Pass(); // of processor time
    }
    Nanoseconds shown = 0;
    const int error = board_clock::ReadOn(trap.simulation, clock, shown);
    if (error == 0) {
        *trap.As<timespec*>(1) = TimeOf(shown);
    }
    return -error;
}
long TimeOfDay(Trap& trap) {
    const timespec wall = TimeOf(trap.simulation.board.WallTime());
    *trap.As<timeval*>(0) = {wall.tv_sec, wall.tv_nsec / 1'000};
    return 0;
}
long Time(Trap& trap) {
    const time_t wall = TimeOf(trap.simulation.board.WallTime()).tv_sec;
    if (trap.As<time_t*>(0) != nullptr) {
        *trap.As<time_t*>(0) = wall;
    }
    return wall;
}

long Yield(Trap& trap) {
    trap.simulation.timeline.Yields();
    return 0;
}

long Poll(Trap& trap) {
    const int timeout = trap.Int(2);
    const timespec span{timeout / 1'000, timeout % 1'000 * 1'000'000L};
    return PollUntil(trap, trap.As<pollfd*>(0), trap.As<std::size_t>(1),
                     Deadline(trap, timeout < 0 ? nullptr : &span));
}
long PollMasked(Trap& trap) {
    return PollUntil(trap, trap.As<pollfd*>(0), trap.As<std::size_t>(1),
                     Deadline(trap, trap.As<const timespec*>(2)));
}
long Select(Trap& trap) {
    const auto* timeout = trap.As<const timeval*>(4);
    const timespec span =
        timeout != nullptr ? timespec{timeout->tv_sec, timeout->tv_usec * 1'000} : timespec{};
    return SelectUntil(trap, Deadline(trap, timeout != nullptr ? &span : nullptr));
}
long SelectMasked(Trap& trap) {
    return SelectUntil(trap, Deadline(trap, trap.As<const timespec*>(4)));
}

long WaitAlone(Trap& trap) {
    if (!IsAlone(trap)) {
        RefuseToWait(trap);
    }
    return trap.Pass();
}

long Bind(Trap& trap) {
    const auto* address = trap.As<const sockaddr_un*>(1);
    constexpr std::size_t before = offsetof(sockaddr_un, sun_path);
    if (address != nullptr && trap.As<std::size_t>(2) > before && address->sun_family == AF_UNIX &&
        address->sun_path[0] != '\0') {
        const std::string path(address->sun_path,
                               strnlen(address->sun_path, trap.As<std::size_t>(2) - before));
        trap.places[0] = WalkPath(trap.simulation, AT_FDCWD, path.c_str(), true);
        if (trap.places[0].board) {
            trap.onBoard = trap.places[0].path;
            trap.Refuse("");
        }
    }
    return trap.Pass();
}
long Connect(Trap& trap) {
    return IsAlone(trap) ? Bind(trap) : WaitAlone(trap);
}

long Alarm(Trap& trap) {
    if (trap.arguments[0] != 0) {
        trap.Refuse(", whose signal would come in real time");
    }
    return trap.Pass();
}

long Futex(Trap& trap) {
    const auto* word = trap.As<const std::uint32_t*>(0);
    const int operation = trap.Int(1) & FUTEX_CMD_MASK;
    const auto value = trap.As<std::uint32_t>(2);
    const auto* time = trap.As<const timespec*>(3);
    const auto bits = operation == FUTEX_WAIT_BITSET || operation == FUTEX_WAKE_BITSET
                          ? trap.As<std::uint32_t>(5)
                          : FUTEX_BITSET_MATCH_ANY;
    Futexes& futexes = trap.simulation.futexes;
    if (operation == FUTEX_WAIT || operation == FUTEX_WAIT_BITSET) {
        AwaitEndedThreads();
        if (bits != 0 && __atomic_load_n(word, __ATOMIC_SEQ_CST) != value) {
            return -EAGAIN; // without allocating anything: it may be the allocator that waits
        }
    }
    switch (operation) {
    case FUTEX_WAIT:
        return futexes.Wait(word, value, bits, Deadline(trap, time), WhatWordIs(word));
    case FUTEX_WAIT_BITSET: {
        const int clock =
            (trap.Int(1) & FUTEX_CLOCK_REALTIME) != 0 ? CLOCK_REALTIME : CLOCK_MONOTONIC;
        const Nanoseconds deadline =
            time != nullptr ? board_clock::MomentOf(trap.simulation, clock, SpanOf(*time)) : kNever;
        return futexes.Wait(word, value, bits, deadline, WhatWordIs(word));
    }
    case FUTEX_WAKE:
    case FUTEX_WAKE_BITSET:
        // A thread that has ended its part in the run may wait in real time.
        return futexes.Wake(word, trap.Int(2), bits) + std::max(trap.Pass(), 0L);
    case FUTEX_REQUEUE:
        return futexes.Requeue(word, trap.Int(2), trap.As<const std::uint32_t*>(4), trap.Int(3));
    case FUTEX_CMP_REQUEUE:
        return futexes.Requeue(word, trap.Int(2), trap.As<const std::uint32_t*>(4), trap.Int(3),
                               trap.As<std::uint32_t>(5));
    default:
        trap.Refuse(", operation " + std::to_string(operation));
    }
}

} // namespace sim::answers
