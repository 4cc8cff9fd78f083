// Stands in for the C library's calls on files: those on board paths and descriptors are answered
// by the simulated kernel, all others go through.

#include "simulator/board/BoardPaths.h"
#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <cstdarg>
#include <dirent.h>
#include <fcntl.h>
#include <sys/uio.h>
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

FILE* OpenStream(const char* path, const char* mode) {
    if (Gate gate(path); gate) {
        return gate->kernel.OpenStream(path, mode);
    }
    return sim::real::fopen(path, mode);
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

FILE* fopen(const char* path, const char* mode) {
    return OpenStream(path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
    return OpenStream(path, mode);
}

int close(int descriptor) {
    if (Gate gate(descriptor); gate) {
        return AsResult(gate->kernel.Close(descriptor));
    }
    return sim::real::close(descriptor);
}

int fclose(FILE* stream) {
    if (Gate gate; gate) {
        const long error = gate->kernel.CloseStream(stream);
        const int result = SIM_REAL(fclose)(stream);
        return error != 0 ? AsResult(error) : result;
    }
    return SIM_REAL(fclose)(stream);
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

ssize_t writev(int descriptor, const iovec* pieces, int count) {
    if (Gate gate(descriptor); gate) {
        std::string whole;
        for (int i = 0; i < count; ++i) {
            whole.append(static_cast<const char*>(pieces[i].iov_base), pieces[i].iov_len);
        }
        return AsResult<ssize_t>(gate->kernel.Write(descriptor, whole.data(), whole.size()));
    }
    return SIM_REAL(writev)(descriptor, pieces, count);
}

ssize_t pread64(int descriptor, void* buffer, size_t size, off64_t offset) {
    if (Gate gate(descriptor); gate) {
        return AsResult<ssize_t>(gate->kernel.ReadAt(descriptor, buffer, size, offset));
    }
    return SIM_REAL(pread64)(descriptor, buffer, size, offset);
}
ssize_t pread(int descriptor, void* buffer, size_t size, off_t offset) {
    return pread64(descriptor, buffer, size, offset);
}

ssize_t pwrite64(int descriptor, const void* data, size_t size, off64_t offset) {
    if (Gate gate(descriptor); gate) {
        return AsResult<ssize_t>(gate->kernel.WriteAt(descriptor, data, size, offset));
    }
    return SIM_REAL(pwrite64)(descriptor, data, size, offset);
}
ssize_t pwrite(int descriptor, const void* data, size_t size, off_t offset) {
    return pwrite64(descriptor, data, size, offset);
}

int ftruncate64(int descriptor, off64_t length) noexcept {
    if (Gate gate(descriptor); gate) {
        return AsResult(gate->kernel.Resize(descriptor, length));
    }
    return SIM_REAL(ftruncate64)(descriptor, length);
}
int ftruncate(int descriptor, off_t length) noexcept {
    return ftruncate64(descriptor, length);
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

int rmdir(const char* path) noexcept {
    if (Gate gate(path); gate) {
        return AsResult(gate->kernel.paths.RemoveDirectory(path));
    }
    return SIM_REAL(rmdir)(path);
}

int unlink(const char* path) noexcept {
    if (Gate gate(path); gate) {
        return AsResult(gate->kernel.paths.Unlink(path));
    }
    return SIM_REAL(unlink)(path);
}

int rename(const char* from, const char* to) noexcept {
    if (Gate gate; gate && (sim::IsBoardPath(from) || sim::IsBoardPath(to))) {
        return AsResult(gate->kernel.paths.Rename(from, to));
    }
    return SIM_REAL(rename)(from, to);
}

int truncate64(const char* path, off64_t length) noexcept {
    if (Gate gate(path); gate) {
        return AsResult(gate->kernel.paths.Truncate(path, length));
    }
    return SIM_REAL(truncate64)(path, length);
}
int truncate(const char* path, off_t length) noexcept {
    return truncate64(path, length);
}

ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
    if (Gate gate(path); gate) {
        return AsResult<ssize_t>(gate->kernel.paths.ReadLink(path));
    }
    return SIM_REAL(readlink)(path, buffer, size);
}

DIR* opendir(const char* path) {
    if (Gate gate(path); gate) {
        std::string host;
        const long error = gate->kernel.paths.List(path, host);
        return AsResult(error) == 0 ? SIM_REAL(opendir)(host.c_str()) : nullptr;
    }
    return SIM_REAL(opendir)(path);
}

} // extern "C"
