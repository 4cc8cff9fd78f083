// Stands in for the C library's usleep where a process is off the board, as a library of its own:
// there the simulated board passes calls on to what comes after the executable.

#include "tests/devices/sound/ChildPauses.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>

namespace tavrelin {

namespace {

int recording = -1;

} // namespace

void RecordPausesTo(int descriptor) {
    recording = descriptor;
}

} // namespace tavrelin

extern "C" int usleep(useconds_t microseconds) {
    if (tavrelin::recording >= 0) {
        return ::dprintf(tavrelin::recording, "%u\n", microseconds) > 0 ? 0 : -1;
    }
    auto* next = reinterpret_cast<decltype(&::usleep)>(::dlsym(RTLD_NEXT, "usleep"));
    return next(microseconds);
}
