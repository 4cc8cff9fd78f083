#include "simulator/kernel/Kernel.h"

#include "simulator/kernel/TextFile.h"
#include "simulator/libc/Real.h"
#include "simulator/scenario/ErrnoNames.h"
#include "simulator/time/ThreadSelf.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <span>
#include <sys/mman.h>

namespace sim {

long Kernel::map(int descriptor, std::size_t length, bool shared, std::int64_t offset,
                 void** address) {
    const OpenFile* file = files_.find(descriptor);
    if (const long error = enter("mmap", file->path()); error != 0) {
        return error;
    }
    if (file->path() != "/dev/mem" || static_cast<std::uint64_t>(offset) != RegisterPage::address ||
        length != RegisterPage::size) {
        unmodelled("mmap of " + std::to_string(length) + " bytes at " + std::to_string(offset) +
                   " of " + file->path());
    }
    if (!file->readable() || (shared && !file->writable())) {
        return -EACCES;
    }
    void* page = SIM_REAL(mmap64)(nullptr, length, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
        return -errno;
    }
    board_.registers.load({static_cast<std::uint32_t*>(page), length / sizeof(std::uint32_t)});
    mappings_[page] = {length, shared};
    events_.add("mmap", file->path(), file->synchronous() ? "0xfffff000" : "0xfffff000 cached");
    *address = page;
    return 0;
}

long Kernel::unmap(void* address) {
    const auto [length, shared] = mappings_.at(address);
    if (shared) {
        const std::span<const std::uint32_t> page{static_cast<const std::uint32_t*>(address),
                                                  length / sizeof(std::uint32_t)};
        for (const std::string& store : board_.registers.store(page)) {
            events_.add("write", "/dev/mem", store);
        }
    }
    mappings_.erase(address);
    enter("munmap", "/dev/mem");
    return SIM_REAL(munmap)(address, length) == 0 ? 0 : -errno;
}

long Kernel::poll(pollfd* descriptors, std::size_t count, int timeout) {
    const OpenFile* file = files_.find(descriptors[0].fd);
    const auto* attribute = dynamic_cast<const TextFile*>(file);
    if (count != 1 || attribute == nullptr || !attribute->line()) {
        unmodelled("poll of anything but one line's value");
        return -ENOSYS;
    }
    if (const long error = enter("poll", file->path()); error != 0) {
        return error;
    }
    if (cut_) {
        descriptors[0].revents = POLLERR;
        return 1;
    }
    const long ready = waitForEdge(descriptors[0], *attribute, timeout);
    events_.add("poll", file->path(),
                "for " + std::to_string(timeout) + " ms: " + (ready > 0 ? "edge" : "time-out"));
    return ready;
}

long Kernel::waitForEdge(pollfd& waiting, const TextFile& value, int timeout) {
    constexpr int always = POLLIN | POLLOUT | POLLRDNORM | POLLWRNORM;
    const unsigned line = *value.line();
    const Nanoseconds deadline = timeout < 0 ? never : timeline_.now() + milliseconds(timeout);
    for (;;) {
        const bool fired = value.gone() || value.seenEdges() != board_.lines.at(line).edges;
        const int ready = fired ? always | POLLPRI | POLLERR : always;
        waiting.revents = static_cast<short>(ready & (waiting.events | POLLERR));
        if (waiting.revents != 0 || timeline_.now() >= deadline) {
            return waiting.revents != 0 ? 1 : 0;
        }
        timeline_.sleepUntil(std::min(deadline, board_.nextEvent()),
                             "an edge on line " + Lines::name(line), &sysfs_);
    }
}

} // namespace sim
