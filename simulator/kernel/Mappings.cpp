#include "simulator/kernel/Mappings.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/libc/Real.h"

#include <cerrno>
#include <span>
#include <sys/mman.h>

namespace sim {

long Mappings::Map(const OpenFile& file, std::size_t length, bool shared, std::int64_t offset,
                   void** address) {
    if (const long error = calls_.Admit("mmap", file.Path()); error != 0) {
        return error;
    }
    if (file.Path() != kMemoryDevice ||
        static_cast<std::uint64_t>(offset) != RegisterPage::kAddress ||
        length != RegisterPage::kSize) {
        calls_.Unmodelled("mmap of " + std::to_string(length) + " bytes at " +
                          std::to_string(offset) + " of " + file.Path());
    }
    if (!file.Readable() || (shared && !file.Writable())) {
        return -EACCES;
    }
    void* page = SIM_REAL(mmap64)(nullptr, length, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
        return -errno;
    }
    calls_.board.registers.Load(
        {static_cast<std::uint32_t*>(page), length / sizeof(std::uint32_t)});
    pages_[page] = {length, shared};
    calls_.events.Add("mmap", file.Path(), file.Synchronous() ? "0xfffff000" : "0xfffff000 cached");
    *address = page;
    return 0;
}

long Mappings::Unmap(void* address) {
    const auto [length, shared] = pages_.at(address);
    if (shared) {
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
