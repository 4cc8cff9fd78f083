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

long Kernel::Map(int descriptor, std::size_t length, bool shared, std::int64_t offset,
                 void** address) {
    const OpenFile* file = files_.Find(descriptor);
    if (const long error = Enter("mmap", file->Path()); error != 0) {
        return error;
    }
    if (file->Path() != "/dev/mem" ||
        static_cast<std::uint64_t>(offset) != RegisterPage::kAddress ||
        length != RegisterPage::kSize) {
        unmodelled("mmap of " + std::to_string(length) + " bytes at " + std::to_string(offset) +
                   " of " + file->Path());
    }
    if (!file->Readable() || (shared && !file->Writable())) {
        return -EACCES;
    }
    void* page = SIM_REAL(mmap64)(nullptr, length, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
        return -errno;
    }
    board_.registers.Load({static_cast<std::uint32_t*>(page), length / sizeof(std::uint32_t)});
    mappings_[page] = {length, shared};
    events_.Add("mmap", file->Path(), file->Synchronous() ? "0xfffff000" : "0xfffff000 cached");
    *address = page;
    return 0;
}

long Kernel::Unmap(void* address) {
    const auto [length, shared] = mappings_.at(address);
    if (shared) {
        const std::span<const std::uint32_t> page{static_cast<const std::uint32_t*>(address),
                                                  length / sizeof(std::uint32_t)};
        for (const std::string& store : board_.registers.Store(page)) {
            events_.Add("write", "/dev/mem", store);
        }
    }
    mappings_.erase(address);
    Enter("munmap", "/dev/mem");
    return SIM_REAL(munmap)(address, length) == 0 ? 0 : -errno;
}

long Kernel::Poll(pollfd* descriptors, std::size_t count, int timeout) {
    const OpenFile* file = files_.Find(descriptors[0].fd);
    const auto* attribute = dynamic_cast<const TextFile*>(file);
    if (count != 1 || attribute == nullptr || !attribute->Line()) {
        unmodelled("poll of anything but one line's value");
        return -ENOSYS;
    }
    if (const long error = Enter("poll", file->Path()); error != 0) {
        return error;
    }
    if (cut_) {
        descriptors[0].revents = POLLERR;
        return 1;
    }
    const long ready = WaitForEdge(descriptors[0], *attribute, timeout);
    events_.Add("poll", file->Path(),
                "for " + std::to_string(timeout) + " ms: " + (ready > 0 ? "edge" : "time-out"));
    return ready;
}

long Kernel::WaitForEdge(pollfd& waiting, const TextFile& value, int timeout) {
    constexpr int always = POLLIN | POLLOUT | POLLRDNORM | POLLWRNORM;
    const unsigned line = *value.Line();
    const Nanoseconds deadline = timeout < 0 ? kNever : timeline_.Now() + Milliseconds(timeout);
    for (;;) {
        const bool fired = value.Gone() || value.SeenEdges() != board_.lines.At(line).edges;
        const int ready = fired ? always | POLLPRI | POLLERR : always;
        waiting.revents = static_cast<short>(ready & (waiting.events | POLLERR));
        if (waiting.revents != 0 || timeline_.Now() >= deadline) {
            return waiting.revents != 0 ? 1 : 0;
        }
        timeline_.SleepUntil(std::min(deadline, board_.NextEvent()),
                             "an edge on line " + Lines::Name(line), &sysfs_);
    }
}

} // namespace sim
