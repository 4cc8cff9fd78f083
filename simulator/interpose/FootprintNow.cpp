#include "simulator/interpose/FootprintNow.h"

#include "simulator/interpose/ThreadWaits.h"
#include "simulator/libc/Real.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <memory>

namespace sim {
namespace {

/// A number from a line such as "Threads:	3" of /proc/self/status; 0 when there is none.
std::uint64_t ProcessStatus(const char* label) {
    std::unique_ptr<FILE, int (*)(FILE*)> file(real::fopen("/proc/self/status", "re"), std::fclose);
    char line[256];
    while (file && std::fgets(line, sizeof line, file.get()) != nullptr) {
        if (std::strncmp(line, label, std::strlen(label)) == 0) {
            return std::strtoull(line + std::strlen(label), nullptr, 10);
        }
    }
    return 0;
}

std::uint32_t LinesOfMaps() {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(real::fopen("/proc/self/maps", "re"),
                                                     std::fclose);
    std::uint32_t count = 0;
    for (int byte = 0; file && (byte = std::getc(file.get())) != EOF;) {
        count += byte == '\n' ? 1U : 0U;
    }
    return count;
}

std::uint32_t OpenDescriptors() {
    std::uint32_t count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        struct stat64 ignored {};
        count += SIM_REAL(fstat64)(descriptor, &ignored) == 0 ? 1U : 0U;
    }
    return count;
}

} // namespace

Footprint FootprintNow(const Kernel& kernel) {
    AwaitEndedThreads();
    Footprint measured;
    measured.heapBytes = mallinfo2().uordblks;
    measured.residentBytes = ProcessStatus("VmRSS:") * 1024;
    measured.threads = static_cast<std::uint32_t>(ProcessStatus("Threads:"));
    measured.boardHandles = static_cast<std::uint32_t>(kernel.Held());
    measured.hostDescriptors = OpenDescriptors();
    measured.mappings = LinesOfMaps();
    return measured;
}

} // namespace sim
