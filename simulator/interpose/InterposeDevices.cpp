// Stands in for the C library's calls on devices and mounts.

#include "simulator/interpose/Gate.h"
#include "simulator/libc/Real.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <mntent.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/statfs.h>

using sim::AsResult;
using sim::Gate;

namespace {

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

extern "C" {

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (Gate gate(descriptor); gate) {
        return AsResult(gate->kernel.Control(descriptor, request, argument));
    }
    return SIM_REAL(ioctl)(descriptor, request, argument);
}

void* mmap64(void* hint, size_t length, int protection, int flags, int descriptor,
             off64_t offset) noexcept {
    if (Gate gate(descriptor); gate) {
        void* address = nullptr;
        const long result =
            gate->kernel.Map(descriptor, length, protection, flags, offset, &address);
        return AsResult(result) < 0 ? MAP_FAILED : address;
    }
    return SIM_REAL(mmap64)(hint, length, protection, flags, descriptor, offset);
}

void* mmap(void* hint, size_t length, int protection, int flags, int descriptor,
           off_t offset) noexcept {
    return mmap64(hint, length, protection, flags, descriptor, offset);
}

int munmap(void* address, size_t length) noexcept {
    if (Gate gate; gate && gate->kernel.mappings.Owns(address)) {
        return AsResult(gate->kernel.mappings.Unmap(address));
    }
    return SIM_REAL(munmap)(address, length);
}

int poll(pollfd* descriptors, nfds_t count, int timeout) {
    if (Gate gate; gate && std::any_of(descriptors, descriptors + count, [&](const pollfd& one) {
                       return gate->kernel.Owns(one.fd);
                   })) {
        return AsResult(gate->kernel.Poll(descriptors, count, timeout));
    }
    return SIM_REAL(poll)(descriptors, count, timeout);
}

int __poll_chk(pollfd* descriptors, nfds_t count, int timeout, size_t /*size*/) {
    return poll(descriptors, count, timeout);
}

int mount(const char* source, const char* target, const char* type, unsigned long flags,
          const void* data) noexcept {
    if (Gate gate; gate) {
        return AsResult(gate->kernel.Mount(
            {source, OrEmpty(target), type, flags, OrEmpty(static_cast<const char*>(data))}));
    }
    return SIM_REAL(mount)(source, target, type, flags, data);
}

int umount(const char* target) noexcept {
    if (Gate gate; gate) {
        return AsResult(gate->kernel.Unmount(OrEmpty(target)));
    }
    return SIM_REAL(umount)(target);
}

FILE* setmntent(const char* path, const char* mode) {
    if (Gate gate(path); gate) {
        return gate->kernel.mounts.Open(path);
    }
    return SIM_REAL(setmntent)(path, mode);
}

// A field "(missing)" of the simulated table stands for one that the C library gives no text for.
mntent* getmntent_r(FILE* table, mntent* entry, char* buffer, int size) noexcept {
    mntent* found = SIM_REAL(getmntent_r)(table, entry, buffer, size);
    if (Gate gate; gate && found != nullptr && gate->kernel.mounts.Owns(table)) {
        for (char** field : {&found->mnt_fsname, &found->mnt_dir}) {
            if (std::string_view(*field) == "(missing)") {
                *field = nullptr;
            }
        }
    }
    return found;
}

int statfs64(const char* path, struct statfs64* result) noexcept {
    if (Gate gate; gate) {
        return AsResult(gate->kernel.FileSystemStatus(path, result));
    }
    return SIM_REAL(statfs64)(path, result);
}

#if __SIZEOF_POINTER__ == 8 // where the two records are one and the same
int statfs(const char* path, struct statfs* result) noexcept {
    return statfs64(path, reinterpret_cast<struct statfs64*>(result));
}
#endif

int endmntent(FILE* table) {
    if (Gate gate; gate) {
        gate->kernel.mounts.Close(table);
    }
    return SIM_REAL(endmntent)(table);
}

} // extern "C"
