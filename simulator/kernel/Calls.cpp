#include "simulator/kernel/Calls.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/CallCosts.h"
#include "simulator/kernel/ErrnoNames.h"
#include "simulator/time/ThreadSelf.h"

namespace sim {

long Calls::Admit(std::string_view call, std::string_view path) {
    if (!IsPlainPath(path)) {
        Unmodelled(std::string(call) + " of " + std::string(path) + ", a path with dots in it");
    }
    Count(call);
    board_.Settle();
    Spend(call);
    scheduler_.Chance(*ThreadSelf());
    return Strike(call, path);
}

void Calls::Count(std::string_view call) {
    auto counted = counts_.find(call);
    if (counted == counts_.end()) {
        counted = counts_.emplace(std::string(call), 0).first;
    }
    ++counted->second;
}

void Calls::Spend(std::string_view call) {
    if (costs_) {
        timeline_.Work(CallCost(call));
    }
}

long Calls::Strike(std::string_view call, std::string_view path) {
    const auto hit = faults.Meet(call, path);
    cut_ = hit ? hit->bytes : std::nullopt;
    const long error = hit ? -hit->error : 0;
    if (error != 0) {
        events_.Add(call, path.empty() ? "-" : path, Outcome(error));
    }
    return error;
}

} // namespace sim
