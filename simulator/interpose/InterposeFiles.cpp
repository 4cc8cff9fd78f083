// Stands in for the C library's calls on files that the product makes, for speed: those on board
// paths and descriptors are answered by the simulated kernel. All others are system calls.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <cstdarg>
#include <fcntl.h>
#include <unistd.h>

namespace {

using sim::AsResult;
using sim::Gate;

mode_t ModeArgument(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

int OpenPath(const char* path, int flags, mode_t mode) {
    if (Gate gate(path); gate) {
        return AsResult(gate->kernel.Open(path, flags, mode));
    }
    return sim::real::open(path, flags, mode);
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeArgument(flags, arguments);
    va_end(arguments);
    return OpenPath(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeArgument(flags, arguments);
    va_end(arguments);
    return OpenPath(path, flags, mode);
}

int __open_2(const char* path, int flags) {
    return OpenPath(path, flags, 0);
}
int __open64_2(const char* path, int flags) {
    return OpenPath(path, flags, 0);
}

int close(int descriptor) {
    if (Gate gate(descriptor); gate) {
        return AsResult(gate->kernel.Close(descriptor));
    }
    if (Gate gate; gate) {
        gate->kernel.OtherDescriptorsChange(); // one that is closed may be kept for the board
    }
    return sim::real::close(descriptor);
}

ssize_t read(int descriptor, void* buffer, size_t size) {
    if (Gate gate(descriptor); gate) {
        return AsResult<ssize_t>(gate->kernel.Read(descriptor, buffer, size));
    }
    return sim::real::read(descriptor, buffer, size);
}

ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t /*bufferSize*/) {
    return read(descriptor, buffer, size);
}

ssize_t write(int descriptor, const void* data, size_t size) {
    if (Gate gate(descriptor); gate) {
        return AsResult<ssize_t>(gate->kernel.Write(descriptor, data, size));
    }
    return sim::real::write(descriptor, data, size);
}

off64_t lseek64(int descriptor, off64_t offset, int whence) noexcept {
    if (Gate gate(descriptor); gate) {
        return AsResult<off64_t>(gate->kernel.Seek(descriptor, offset, whence));
    }
    return SIM_REAL(lseek64)(descriptor, offset, whence);
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept {
    return static_cast<off_t>(lseek64(descriptor, offset, whence));
}

int access(const char* path, int wanted) noexcept {
    if (Gate gate(path); gate) {
        return AsResult(gate->kernel.paths.Access(path, wanted));
    }
    return SIM_REAL(access)(path, wanted);
}

int stat64(const char* path, struct stat64* result) noexcept {
    if (Gate gate(path); gate) {
        return AsResult(gate->kernel.paths.Status(path, true, result));
    }
    return sim::real::stat(path, result);
}

int lstat64(const char* path, struct stat64* result) noexcept {
    if (Gate gate(path); gate) {
        return AsResult(gate->kernel.paths.Status(path, false, result));
    }
    return SIM_REAL(lstat64)(path, result);
}

int fstat64(int descriptor, struct stat64* result) noexcept {
    if (Gate gate(descriptor); gate) {
        return AsResult(gate->kernel.DescriptorStatus(descriptor, result));
    }
    return SIM_REAL(fstat64)(descriptor, result);
}

#if __SIZEOF_POINTER__ == 8 // where the two records are one and the same
int stat(const char* path, struct stat* result) noexcept {
    return stat64(path, reinterpret_cast<struct stat64*>(result));
}
int lstat(const char* path, struct stat* result) noexcept {
    return lstat64(path, reinterpret_cast<struct stat64*>(result));
}
int fstat(int descriptor, struct stat* result) noexcept {
    return fstat64(descriptor, reinterpret_cast<struct stat64*>(result));
}
#endif

int mkdir(const char* path, mode_t mode) noexcept {
    if (Gate gate(path); gate) {
        return AsResult(gate->kernel.paths.MakeDirectory(path, mode));
    }
    return sim::real::mkdir(path, mode);
}

} // extern "C"
