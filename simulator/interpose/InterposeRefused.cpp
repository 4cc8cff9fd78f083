// Calls on files that the simulated kernel does not model: on a board path or descriptor they stop
// the run, elsewhere they go through.

#include "simulator/interpose/Refuse.h"
#include "simulator/libc/Real.h"

#include <cstdarg>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

mode_t ModeArgument(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

extern "C" {

SIM_REFUSE(int, chdir, "chdir", (const char* path), path, path)
SIM_REFUSE(int, remove, "remove", (const char* path), path, path)
SIM_REFUSE(int, chmod, "chmod", (const char* path, mode_t mode), path, path, mode)
SIM_REFUSE(char*, realpath, "realpath", (const char* path, char* resolved), path, path, resolved)
SIM_REFUSE(int, creat, "creat", (const char* path, mode_t mode), path, path, mode)
SIM_REFUSE(int, creat64, "creat", (const char* path, mode_t mode), path, path, mode)
SIM_REFUSE(FILE*, freopen, "freopen", (const char* path, const char* mode, FILE* stream), path,
           path, mode, stream)
SIM_REFUSE(FILE*, freopen64, "freopen", (const char* path, const char* mode, FILE* stream), path,
           path, mode, stream)
SIM_REFUSE(int, statvfs, "statvfs", (const char* path, struct statvfs* result), path, path, result)
SIM_REFUSE(int, statvfs64, "statvfs", (const char* path, struct statvfs64* result), path, path,
           result)
SIM_REFUSE(int, umount2, "umount2", (const char* target, int flags), target, target, flags)

SIM_REFUSE(int, fstatat, "fstatat", (int folder, const char* path, struct stat* result, int flags),
           path, folder, path, result, flags)
SIM_REFUSE(int, fstatat64, "fstatat",
           (int folder, const char* path, struct stat64* result, int flags), path, folder, path,
           result, flags)
SIM_REFUSE(int, statx, "statx",
           (int folder, const char* path, int flags, unsigned mask, struct statx* result), path,
           folder, path, flags, mask, result)
SIM_REFUSE(int, faccessat, "faccessat", (int folder, const char* path, int mode, int flags), path,
           folder, path, mode, flags)
SIM_REFUSE(int, mkdirat, "mkdirat", (int folder, const char* path, mode_t mode), path, folder, path,
           mode)
SIM_REFUSE(int, unlinkat, "unlinkat", (int folder, const char* path, int flags), path, folder, path,
           flags)
SIM_REFUSE(int, symlink, "symlink", (const char* target, const char* path), path, target, path)
SIM_REFUSE(int, link, "link", (const char* target, const char* path), path, target, path)

SIM_REFUSE(DIR*, fdopendir, "fdopendir", (int descriptor), descriptor, descriptor)
SIM_REFUSE(FILE*, fdopen, "fdopen", (int descriptor, const char* mode), descriptor, descriptor,
           mode)
SIM_REFUSE(int, dup, "dup", (int descriptor), descriptor, descriptor)
SIM_REFUSE(int, dup2, "dup2", (int descriptor, int wanted), descriptor, descriptor, wanted)
SIM_REFUSE(int, dup3, "dup3", (int descriptor, int wanted, int flags), descriptor, descriptor,
           wanted, flags)
SIM_REFUSE(int, flock, "flock", (int descriptor, int operation), descriptor, descriptor, operation)
SIM_REFUSE(int, fsync, "fsync", (int descriptor), descriptor, descriptor)
SIM_REFUSE(int, fdatasync, "fdatasync", (int descriptor), descriptor, descriptor)
SIM_REFUSE(ssize_t, readv, "readv", (int descriptor, const iovec* pieces, int count), descriptor,
           descriptor, pieces, count)

int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t* mask) {
    for (nfds_t i = 0; i < count; ++i) {
        sim::Refuse("ppoll", descriptors[i].fd);
    }
    return SIM_REAL(ppoll)(descriptors, count, timeout, mask);
}

int openat(int folder, const char* path, int flags, ...) {
    sim::Refuse("openat", path);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeArgument(flags, arguments);
    va_end(arguments);
    return SIM_REAL(openat)(folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...) {
    sim::Refuse("openat", path);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeArgument(flags, arguments);
    va_end(arguments);
    return SIM_REAL(openat64)(folder, path, flags, mode);
}

int fcntl(int descriptor, int command, ...) {
    sim::Refuse("fcntl", descriptor);
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return SIM_REAL(fcntl)(descriptor, command, argument);
}

int fcntl64(int descriptor, int command, ...) {
    sim::Refuse("fcntl", descriptor);
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return SIM_REAL(fcntl64)(descriptor, command, argument);
}

} // extern "C"
