#pragma once

#include "simulator/kernel/Calls.h"
#include "simulator/kernel/OpenFile.h"

#include <map>

namespace sim {

/// The register pages that the program has mapped from the memory device. Results are 0 or a
/// negated errno.
class Mappings {
  public:
    explicit Mappings(Calls& calls) : calls_(calls) {}

    /// With MAP_SHARED, stores reach the device, else they stay in the program's own copy.
    long Map(const OpenFile& file, std::size_t length, int protection, int flags,
             std::int64_t offset, void** address);
    long Unmap(void* address);
    bool Owns(const void* address) const { return pages_.contains(address); }
    std::size_t Count() const { return pages_.size(); }

  private:
    struct Page {
        std::size_t length = 0;
        bool storing = false; ///< what is stored in it reaches the device
    };

    /// 0, or the negated errno that refuses the mapping.
    long Check(const OpenFile& file, std::size_t length, int protection, int flags,
               std::int64_t offset) const;

    Calls& calls_;
    std::map<const void*, Page> pages_;
};

} // namespace sim
