// A machine without a gate at the system call: the stand-ins alone keep the program on the board.

#include "simulator/interpose/SystemCallGate.h"
#include "simulator/interpose/Watchdog.h"

namespace sim::system_calls {

bool Arm() {
    return false;
}
void Disarm() {}
bool IsArmed() {
    return false;
}
bool IsInside() {
    return false;
}
char Open() {
    return 0;
}
void Restore(char /*before*/) {}

} // namespace sim::system_calls

namespace sim::watchdog {

void Begin() {}
void CallMade() {}

} // namespace sim::watchdog
