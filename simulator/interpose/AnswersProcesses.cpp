// What becomes of system calls that start, replace and end processes.

#include "simulator/interpose/Processes.h"
#include "simulator/interpose/SystemCall.h"
#include "simulator/interpose/SystemCallGate.h"

#include <cerrno>
#include <linux/sched.h>
#include <sched.h>
#include <sys/syscall.h>

namespace sim::answers {

long Exit(Trap& trap) {
    if (trap.simulation.onExit) {
        trap.simulation.onExit();
    }
    return trap.Pass();
}

long Become(Trap& trap) {
    if (Simulation::OfThisThread() == nullptr) {
        RefuseToolsOnBoard(trap.simulation);
        return trap.Pass();
    }
    trap.Refuse(" of " + trap.places[0].path +
                ", which would not run on the board; name the program itself");
}

long Clone(Trap& trap) {
    const bool copies =
        trap.call.number == SYS_fork ||
        (trap.call.number == SYS_clone && (trap.arguments[0] & (CLONE_VM | CLONE_VFORK)) == 0 &&
         trap.arguments[1] == 0);
    if (!copies) {
        trap.Refuse(", of a thread or a process that neither pthread_create nor fork made");
    }
    if (Simulation::OfThisThread() == nullptr) {
        return trap.Pass(); // by a process that was forked off already
    }
    return ForkOnBoard(trap.simulation, [&] { return static_cast<pid_t>(trap.Pass()); });
}

} // namespace sim::answers
