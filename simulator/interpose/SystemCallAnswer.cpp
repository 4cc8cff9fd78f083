// What becomes of a system call that came to the gate: by what the table says of it, and by whether
// it is about the board.

#include "simulator/interpose/Gate.h"
#include "simulator/interpose/SystemCall.h"

#include <csignal>
#include <fcntl.h>
#include <string_view>
#include <sys/syscall.h>

namespace sim {
namespace {

/// This machine's kernel answers, and while it does the thread hears the signals that it would.
long Hearing(std::uint64_t blocked, long number, const std::array<long, 6>& arguments) {
    std::uint64_t before = 0;
    Trap::Pass(SYS_rt_sigprocmask, {SIG_SETMASK, reinterpret_cast<long>(&blocked),
                                    reinterpret_cast<long>(&before), sizeof before});
    const long result = Trap::Pass(number, arguments);
    Trap::Pass(SYS_rt_sigprocmask,
               {SIG_SETMASK, reinterpret_cast<long>(&before), 0, sizeof before});
    return result;
}

/// Looks up what a call's arguments are about: true when that is the board's.
bool IsAboutBoard(Trap& trap) {
    bool board = false;
    int folder = AT_FDCWD;
    std::size_t place = 0;
    std::size_t argument = 0;
    for (const char* kind = trap.call.about; *kind != '\0'; ++kind) {
        if (*kind == '!' || *kind == '+') {
            board = board || *kind == '!';
            continue;
        }
        if (*kind == 'd') {
            folder = static_cast<int>(trap.arguments.at(argument));
        } else if (*kind == 'f') {
            const int descriptor = static_cast<int>(trap.arguments.at(argument));
            trap.onBoard =
                trap.Board().Owns(descriptor) ? trap.Board().PathOf(descriptor) : trap.onBoard;
        } else if (const auto* text = reinterpret_cast<const char*>(trap.arguments.at(argument));
                   *kind != '-' && text != nullptr) {
            const bool asked = trap.call.flags == 0 ||
                               (trap.arguments.at(static_cast<std::size_t>(trap.call.flags)) &
                                AT_SYMLINK_NOFOLLOW) == 0;
            Place& found = trap.places.at(place++);
            found = WalkPath(trap.simulation, folder, text, *kind == 'p' && asked);
            trap.onBoard = found.board && trap.onBoard.empty() ? found.path : trap.onBoard;
            board = board || found.board; // an empty path is a descriptor's own
            if (found.strayed) {
                trap.arguments.at(argument) = reinterpret_cast<long>(found.path.c_str());
            }
        }
        ++argument;
    }
    return board || !trap.onBoard.empty();
}

/// What the call of a process that was forked off, or of a thread that has ended, comes to: the
/// board is not its own.
long Outside(Simulation& simulation, Trap& trap) {
    const bool keepsApart = trap.call.number == SYS_close || trap.call.number == SYS_fcntl ||
                            trap.call.number == SYS_dup || trap.call.number == SYS_dup2 ||
                            trap.call.number == SYS_dup3;
    static_cast<void>(IsAboutBoard(trap));
    if (!keepsApart && !trap.onBoard.empty()) {
        simulation.end(Ending::Unmodelled, std::string(trap.call.name) + " of " + trap.onBoard +
                                               " in a process that the program forked off");
    }
    for (answers::Answer* own : {answers::Become, answers::Clone, answers::SignalAction,
                                 answers::SignalMask, answers::Suspend}) {
        if (trap.call.answer == own) {
            return own(trap);
        }
    }
    return trap.Pass();
}

} // namespace

long AnswerSystemCall(long number, const std::array<long, 6>& arguments, std::uint64_t& blocked) {
    Simulation* living = Simulation::Living();
    const SystemCall* call = FindSystemCall(number);
    if (living == nullptr) {
        return Trap::Pass(number, arguments);
    }
    if (call == nullptr) {
        living->end(Ending::Unmodelled, "system call " + std::to_string(number));
    }
    if (call->treatment == Treatment::Passed && *call->about == '\0') {
        return Hearing(blocked, number, arguments);
    }
    Trap trap{*call, arguments, *living, blocked};
    if (Simulation::OfThisThread() == nullptr) {
        return Outside(*living, trap);
    }
    const Gate gate;
    if (!IsAboutBoard(trap)) {
        return trap.Pass();
    }
    if (call->answer == nullptr) {
        trap.Refuse("");
    }
    for (const Place& place : trap.places) {
        if (place.error != 0) {
            return place.error;
        }
    }
    return call->answer(trap);
}

long Trap::Pass() const {
    if (std::string_view(call.about).find('+') != std::string_view::npos) {
        simulation.kernel.OtherDescriptorsChange();
    }
    return Hearing(blocked, call.number, arguments);
}

void Trap::Refuse(const std::string& why) const {
    simulation.kernel.calls.Unmodelled(call.name + (onBoard.empty() ? "" : " of " + onBoard) + why);
}

} // namespace sim
