#pragma once

// To be included by one file of an executable: it replaces an operator of the C++ library.

#include <cstddef>
#include <new>

namespace tavrelin {

/// Memory for this many devices while it lives: the instrument makes its devices, and nothing else,
/// with the operator below.
class MemoryForDevices {
  public:
    explicit MemoryForDevices(int devices) { left = devices; }
    MemoryForDevices(const MemoryForDevices&) = delete;
    MemoryForDevices& operator=(const MemoryForDevices&) = delete;
    ~MemoryForDevices() { left = kNoEnd; }

    /// Whether there was memory for one more.
    static bool Take() { return left == kNoEnd || (left > 0 && left-- > 0); }

  private:
    static constexpr int kNoEnd = -1;
    static inline int left = kNoEnd;
};

} // namespace tavrelin

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    if (!tavrelin::MemoryForDevices::Take()) {
        return nullptr;
    }
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
