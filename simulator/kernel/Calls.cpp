#include "simulator/kernel/Calls.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"

#include <array>
#include <utility>

namespace sim {

Nanoseconds CallCost(std::string_view call) {
    using namespace std::string_view_literals;
    static constexpr std::array costs{
        std::pair{"access"sv, Microseconds(12)},    std::pair{"open"sv, Microseconds(18)},
        std::pair{"read"sv, Microseconds(8)},       std::pair{"write"sv, Microseconds(12)},
        std::pair{"close"sv, Microseconds(4)},      std::pair{"lseek"sv, Microseconds(2)},
        std::pair{"ioctl"sv, Microseconds(8)},      std::pair{"stat"sv, Microseconds(14)},
        std::pair{"lstat"sv, Microseconds(14)},     std::pair{"mkdir"sv, Microseconds(200)},
        std::pair{"mmap"sv, Microseconds(20)},      std::pair{"mount"sv, Milliseconds(45)},
        std::pair{"umount"sv, Milliseconds(10)},    std::pair{"setmntent"sv, Microseconds(60)},
        std::pair{"card write"sv, Milliseconds(3)}, std::pair{"pthread_create"sv, Microseconds(90)},
    };
    for (const auto& [name, cost] : costs) {
        if (name == call) {
            return cost;
        }
    }
    return 0;
}

long Calls::Admit(std::string_view call, std::string_view path) {
    if (!IsPlainPath(path)) {
        Unmodelled(std::string(call) + " of " + std::string(path) + ", a path with dots in it");
    }
    if (limit && made_ == *limit) {
        end(Ending::LimitReached, "calls");
    }
    Count(call);
    board.Settle();
    Spend(call);
    scheduler.Chance(*ThreadSelf());
    return Strike(call, path);
}

void Calls::Count(std::string_view call) {
    auto counted = counts_.find(call);
    if (counted == counts_.end()) {
        counted = counts_.emplace(std::string(call), 0).first;
    }
    ++counted->second;
    ++made_;
}

void Calls::Spend(std::string_view call) {
    if (costs_) {
        timeline.Work(CallCost(call));
    }
}

long Calls::Strike(std::string_view call, std::string_view path) {
    const Fault* fault = faults.Meet(call, path, board.Now());
    cut_ = fault != nullptr ? fault->bytes : std::nullopt;
    const long error = fault != nullptr ? -fault->error : 0;
    if (error != 0) {
        events.Add(call, path.empty() ? "-" : path, Outcome(error));
    }
    if (fault != nullptr && onFault) {
        onFault(call, path,
                error != 0 ? Outcome(error) : std::to_string(cut_.value_or(0)) + " bytes");
    }
    return error;
}

} // namespace sim
