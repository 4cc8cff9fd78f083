#include "simulator/kernel/Calls.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"

#include <array>
#include <utility>

namespace sim {

Nanoseconds CallCost(std::string_view call) {
    using namespace std::string_view_literals;
    static constexpr std::array costs{
        std::pair{"access"sv, Microseconds(60)},
        std::pair{"open"sv, Microseconds(140)},
        std::pair{"read"sv, Microseconds(80)},
        std::pair{"write"sv, Microseconds(80)},
        std::pair{"close"sv, Microseconds(50)},
        std::pair{"lseek"sv, Microseconds(10)},
        std::pair{"ioctl"sv, Microseconds(30)},
        std::pair{"stat"sv, Microseconds(60)},
        std::pair{"lstat"sv, Microseconds(60)},
        std::pair{"mkdir"sv, Milliseconds(2)},
        std::pair{"mmap"sv, Microseconds(60)},
        std::pair{"mount"sv, Milliseconds(10)},
        std::pair{"umount"sv, Milliseconds(5)},
        std::pair{"setmntent"sv, Microseconds(400)},
        std::pair{"card write"sv, Microseconds(1500)},
        std::pair{"pthread_create"sv, Microseconds(200)},
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
    occasions.Called(call, path);
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
    if (tellEach) {
        events.Add("call", path.empty() ? "-" : path, call);
    }
    const Fault* fault = faults.Meet(call, path, board.Now());
    cut_ = fault != nullptr ? fault->bytes : std::nullopt;
    if (fault == nullptr) {
        return 0;
    }
    const std::string what = cut_ ? std::to_string(*cut_) + " bytes" : Outcome(-fault->error);
    events.Add(call, path.empty() ? "-" : path, what);
    if (onFault) {
        onFault(call, path, what);
    }
    return -fault->error;
}

} // namespace sim
