// Calls that the simulated kernel does not model: on a board path or descriptor they stop the run,
// elsewhere they go through.

#include "simulator/runtime/Real.h"
#include "simulator/runtime/Simulation.h"

#include <cstdarg>
#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

using sim::Gate;
using sim::Kernel;

void refuse(const char* call, const char* path) {
    if (path != nullptr && Kernel::owns(path)) {
        if (Gate gate; gate) {
            gate->kernel.unmodelled(std::string(call) + " of " + path);
        }
    }
}

void refuse(const char* call, int descriptor) {
    if (Gate gate; gate && gate->kernel.owns(descriptor)) {
        gate->kernel.unmodelled(std::string(call) + " of descriptor " + std::to_string(descriptor));
    }
}

void refuseThreads(const char* call) {
    if (Gate gate; gate) {
        gate->kernel.unmodelled(std::string(call) +
                                ": the board schedules threads until they are joined");
    }
}

} // namespace

extern "C" {

DIR* opendir(const char* path) {
    refuse("opendir", path);
    return SIM_REAL(opendir)(path);
}

int unlink(const char* path) noexcept {
    refuse("unlink", path);
    return SIM_REAL(unlink)(path);
}

int remove(const char* path) noexcept {
    refuse("remove", path);
    return SIM_REAL(remove)(path);
}

int rename(const char* from, const char* to) noexcept {
    refuse("rename", from);
    refuse("rename", to);
    return SIM_REAL(rename)(from, to);
}

int rmdir(const char* path) noexcept {
    refuse("rmdir", path);
    return SIM_REAL(rmdir)(path);
}

int chmod(const char* path, mode_t mode) noexcept {
    refuse("chmod", path);
    return SIM_REAL(chmod)(path, mode);
}

int truncate64(const char* path, off64_t length) noexcept {
    refuse("truncate", path);
    return SIM_REAL(truncate64)(path, length);
}

ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
    refuse("readlink", path);
    return SIM_REAL(readlink)(path, buffer, size);
}

int symlink(const char* target, const char* path) noexcept {
    refuse("symlink", path);
    return SIM_REAL(symlink)(target, path);
}

int creat64(const char* path, mode_t mode) {
    refuse("creat", path);
    return SIM_REAL(creat64)(path, mode);
}

int openat64(int folder, const char* path, int flags, ...) {
    refuse("openat", path);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return SIM_REAL(openat64)(folder, path, flags, mode);
}

FILE* freopen64(const char* path, const char* mode, FILE* stream) {
    refuse("freopen", path);
    return SIM_REAL(freopen64)(path, mode, stream);
}

int statx(int folder, const char* path, int flags, unsigned mask, struct statx* result) noexcept {
    refuse("statx", path);
    return SIM_REAL(statx)(folder, path, flags, mask, result);
}

int statvfs64(const char* path, struct statvfs64* result) noexcept {
    refuse("statvfs", path);
    return SIM_REAL(statvfs64)(path, result);
}

#if __SIZEOF_POINTER__ == 8 // where the C++ library's filesystem part calls them by these names
int openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return openat64(folder, path, flags, mode);
}

int truncate(const char* path, off_t length) noexcept {
    return truncate64(path, length);
}

int statvfs(const char* path, struct statvfs* result) noexcept {
    return statvfs64(path, reinterpret_cast<struct statvfs64*>(result));
}
#endif

int umount2(const char* target, int flags) noexcept {
    refuse("umount2", target);
    return SIM_REAL(umount2)(target, flags);
}

int dup(int descriptor) noexcept {
    refuse("dup", descriptor);
    return SIM_REAL(dup)(descriptor);
}

int fsync(int descriptor) {
    refuse("fsync", descriptor);
    return SIM_REAL(fsync)(descriptor);
}

ssize_t pread64(int descriptor, void* buffer, size_t size, off64_t offset) {
    refuse("pread", descriptor);
    return SIM_REAL(pread64)(descriptor, buffer, size, offset);
}

ssize_t pwrite64(int descriptor, const void* data, size_t size, off64_t offset) {
    refuse("pwrite", descriptor);
    return SIM_REAL(pwrite64)(descriptor, data, size, offset);
}

int pthread_detach(pthread_t thread) noexcept {
    refuseThreads("pthread_detach");
    return SIM_REAL(pthread_detach)(thread);
}

int pthread_cancel(pthread_t thread) {
    refuseThreads("pthread_cancel");
    return SIM_REAL(pthread_cancel)(thread);
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    refuseThreads("pthread_cond_wait");
    return SIM_REAL(pthread_cond_wait)(condition, mutex);
}

} // extern "C"
