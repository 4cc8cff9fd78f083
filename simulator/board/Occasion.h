#pragma once

#include <cstdint>
#include <string>

namespace sim {

/// When something happens whose moment of board time only the run will tell.
struct Occasion {
    std::uint64_t step = 0;        ///< as the how-manieth step begins; 0: not by step
    std::uint64_t measurement = 0; ///< as the how-manieth measurement is complete; 0: not by it
    std::string call;              ///< before the board answers such a call; empty: not by call
    std::string path;              ///< on this path, as a fault's
    std::uint64_t occurrence = 1;  ///< the how-manieth such call

    bool Set() const { return step != 0 || measurement != 0 || !call.empty(); }
};

} // namespace sim
