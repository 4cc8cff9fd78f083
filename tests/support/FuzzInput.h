#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace tavrelin {

/// Ends the fuzzing with this input as a finding.
inline void Hold(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// A file without a place on a disk, for readers that want a path.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view bytes) : descriptor_(::memfd_create("fuzz", MFD_CLOEXEC)) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        Hold(written == static_cast<ssize_t>(bytes.size()));
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    MemoryFile(MemoryFile&&) = delete;
    MemoryFile& operator=(MemoryFile&&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    [[nodiscard]] std::string Path() const {
        return "/proc/self/fd/" + std::to_string(descriptor_);
    }

  private:
    int descriptor_;
};

} // namespace tavrelin
