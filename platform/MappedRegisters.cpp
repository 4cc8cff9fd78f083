#include "platform/MappedRegisters.h"

#include "platform/FileDescriptor.h"
#include "platform/GpioPin.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/types.h>

#include <iostream>
#include <string>

namespace tavrelin {

namespace {

constexpr std::uint32_t kPageSize = 4096;
constexpr std::uint32_t kOffsetInPage = kPageSize - 1;

// Register map of the parallel-I/O controller: a block per port, 32-bit registers, a bit per line.
constexpr std::uint32_t kPortABase = 0xFFFFF400;
constexpr std::uint32_t kPortStride = 0x200;
constexpr std::uint32_t kSetOutput = 0x30;   // a written 1 drives the line high, a 0 does nothing
constexpr std::uint32_t kClearOutput = 0x34; // a written 1 drives the line low, a 0 does nothing
constexpr std::uint32_t kPinStatus = 0x3C;   // a read 1 says that the line is high

constexpr std::uint32_t RegisterAddress(std::uint32_t bank, std::uint32_t reg) {
    return kPortABase + bank * kPortStride + reg;
}

// The page of the physical address space that holds `address`, mapped while the object lives.
class MappedPage {
  public:
    // Unbuffered, so that a store reaches the line at once.
    explicit MappedPage(std::uint32_t address)
        : memory_(::open(kMemoryDevice, O_RDWR | O_SYNC | O_CLOEXEC)),
          page_(Map(address & ~kOffsetInPage)) {}
    MappedPage(const MappedPage&) = delete;
    MappedPage& operator=(const MappedPage&) = delete;
    MappedPage(MappedPage&&) = delete;
    MappedPage& operator=(MappedPage&&) = delete;
    ~MappedPage() {
        if (IsMapped()) {
            ::munmap(page_, kPageSize);
        }
    }

    [[nodiscard]] bool IsMapped() const { return page_ != MAP_FAILED; }

    [[nodiscard]] volatile std::uint32_t& Register(std::uint32_t address) const {
        return static_cast<volatile std::uint32_t*>(
            page_)[(address & kOffsetInPage) / sizeof(std::uint32_t)];
    }

  private:
    [[nodiscard]] void* Map(off_t page) const {
        if (!memory_.IsOpen()) {
            std::cerr << "open of " + std::string(kMemoryDevice) + " failed\n";
            return MAP_FAILED;
        }
        void* mapped =
            ::mmap(nullptr, kPageSize, PROT_READ | PROT_WRITE, MAP_SHARED, memory_.Get(), page);
        if (mapped == MAP_FAILED) {
            std::cerr << "mmap failed\n";
        }
        return mapped;
    }

    FileDescriptor memory_;
    void* page_;
};

// The register page lies in the upper half of 32 bits: its offset must not come out negative.
static_assert(sizeof(off_t) == 8, "file offsets must have 64 bits");

} // namespace

std::uint32_t ReadMappedPin(std::uint32_t bank, std::uint32_t bit) {
    if (bit >= kLinesPerBank) {
        return kLevelError;
    }
    const std::uint32_t status = RegisterAddress(bank, kPinStatus);
    const MappedPage page(status);
    if (!page.IsMapped()) {
        return kLevelError;
    }
    return (page.Register(status) >> bit & 1U) != 0 ? kLevelHigh : kLevelLow;
}

bool WriteMappedPin(std::uint32_t bank, std::uint32_t bit, std::uint32_t level) {
    if (bit >= kLinesPerBank) {
        return false;
    }
    const MappedPage page(RegisterAddress(bank, kSetOutput));
    if (!page.IsMapped()) {
        return false;
    }
    const std::uint32_t action = level == kLevelHigh ? kSetOutput : kClearOutput;
    page.Register(RegisterAddress(bank, action)) = 1U << bit;
    return true;
}

} // namespace tavrelin
