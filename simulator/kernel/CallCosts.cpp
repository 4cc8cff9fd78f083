#include "simulator/kernel/CallCosts.h"

#include <array>
#include <utility>

namespace sim {

Nanoseconds callCost(std::string_view call) {
    using namespace std::string_view_literals;
    static constexpr std::array costs{
        std::pair{"access"sv, microseconds(12)},    std::pair{"open"sv, microseconds(18)},
        std::pair{"read"sv, microseconds(8)},       std::pair{"write"sv, microseconds(12)},
        std::pair{"close"sv, microseconds(4)},      std::pair{"lseek"sv, microseconds(2)},
        std::pair{"ioctl"sv, microseconds(8)},      std::pair{"stat"sv, microseconds(14)},
        std::pair{"lstat"sv, microseconds(14)},     std::pair{"mkdir"sv, microseconds(200)},
        std::pair{"mmap"sv, microseconds(20)},      std::pair{"mount"sv, milliseconds(45)},
        std::pair{"umount"sv, milliseconds(10)},    std::pair{"setmntent"sv, microseconds(60)},
        std::pair{"card write"sv, milliseconds(3)}, std::pair{"pthread_create"sv, microseconds(90)},
    };
    for (const auto& [name, cost] : costs) {
        if (name == call) {
            return cost;
        }
    }
    return 0;
}

} // namespace sim
