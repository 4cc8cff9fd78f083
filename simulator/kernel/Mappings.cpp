#include "simulator/kernel/Mappings.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <span>
#include <sys/mman.h>

namespace sim {

long Mappings::Check(const OpenFile& file, std::size_t length, int protection, int flags,
                     std::int64_t offset) const {
    constexpr std::int64_t pageSize = RegisterPage::kSize;
    const bool shared = (flags & MAP_SHARED) != 0;
    if (offset % pageSize != 0 || length == 0 || (flags & (MAP_SHARED | MAP_PRIVATE)) == 0) {
        return -EINVAL;
    }
    if (!file.Readable() || (shared && (protection & PROT_WRITE) != 0 && !file.Writable())) {
        return -EACCES;
    }
    if (file.Path() != kMemoryDevice) {
        if (file.OfCard()) {
            calls_.Unmodelled("mmap of " + file.Path());
        }
        return -ENODEV;
    }
    constexpr std::int64_t end = 1LL << 32; // of the board's addresses
    if (offset < 0 || static_cast<std::int64_t>(length) > end - offset) {
        return -EINVAL;
    }
    if (offset != RegisterPage::kAddress) {
        calls_.Unmodelled("mmap of " + std::to_string(length) + " bytes at " +
                          std::to_string(offset) + " of " + file.Path());
    }
    return 0;
}

long Mappings::Map(const OpenFile& file, std::size_t length, int protection, int flags,
                   std::int64_t offset, void** address) {
    if (const long error = calls_.Admit("mmap", file.Path()); error != 0) {
        return error;
    }
    if (const long error = Check(file, length, protection, flags, offset); error != 0) {
        return error;
    }
    length = RegisterPage::kSize;
    void* page = SIM_REAL(mmap64)(nullptr, length, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
        return -errno;
    }
    calls_.board.registers.Load(
        {static_cast<std::uint32_t*>(page), length / sizeof(std::uint32_t)});
    pages_[page] = {length, (flags & MAP_SHARED) != 0 && (protection & PROT_WRITE) != 0};
    mprotect(page, length, protection);
    calls_.events.Add("mmap", file.Path(), file.Synchronous() ? "0xfffff000" : "0xfffff000 cached");
    *address = page;
    return 0;
}

long Mappings::Unmap(void* address) {
    const auto [length, storing] = pages_.at(address);
    if (storing) {
        const std::span<const std::uint32_t> page{static_cast<const std::uint32_t*>(address),
                                                  length / sizeof(std::uint32_t)};
        for (const std::string& store : calls_.board.registers.Store(page)) {
            calls_.events.Add("write", kMemoryDevice, store);
        }
    }
    pages_.erase(address);
    calls_.Admit("munmap", kMemoryDevice);
    return SIM_REAL(munmap)(address, length) == 0 ? 0 : -errno;
}

} // namespace sim
