// Stands in for calls of the C library where a process is off the board or the board passes them
// on, as a library of its own: it comes after the executable and before the C library.

#include "tests/devices/sound/ProcessCalls.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tavrelin {

namespace {

int recording = -1;
int interruptions = 0;

} // namespace

void RecordPausesTo(int descriptor) {
    recording = descriptor;
}

void InterruptWaits(int count) {
    interruptions = count;
}

} // namespace tavrelin

extern "C" {

int usleep(useconds_t microseconds) {
    if (tavrelin::recording >= 0) {
        return ::dprintf(tavrelin::recording, "%u\n", microseconds) > 0 ? 0 : -1;
    }
    auto* next = reinterpret_cast<decltype(&::usleep)>(::dlsym(RTLD_NEXT, "usleep"));
    return next(microseconds);
}

pid_t waitpid(pid_t process, int* status, int options) {
    if (tavrelin::interruptions > 0) {
        --tavrelin::interruptions;
        errno = EINTR;
        return -1;
    }
    auto* next = reinterpret_cast<decltype(&::waitpid)>(::dlsym(RTLD_NEXT, "waitpid"));
    return next(process, status, options);
}

} // extern "C"
