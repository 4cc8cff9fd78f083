#include "simulator/kernel/Occasions.h"

#include "simulator/kernel/Faults.h"

namespace sim {

void Occasions::Await(const Occasion& occasion, std::function<void()> action) {
    awaited_.push_back({occasion, std::move(action)});
}

void Occasions::Counted(std::uint64_t steps, std::uint64_t measurements) {
    for (Awaited& each : awaited_) {
        const Occasion& wanted = each.occasion;
        const bool due = (wanted.step != 0 && steps >= wanted.step) ||
                         (wanted.measurement != 0 && measurements >= wanted.measurement);
        if (due && !each.past) {
            each.past = true;
            each.action();
        }
    }
}

void Occasions::Called(std::string_view call, std::string_view path) {
    for (Awaited& each : awaited_) {
        const Occasion& wanted = each.occasion;
        if (wanted.call == call && MatchesPath(wanted.path, path) &&
            ++each.met == wanted.occurrence) {
            each.past = true;
            each.action();
        }
    }
}

std::string Occasions::Missing() const {
    std::string text;
    for (const Awaited& each : awaited_) {
        const Occasion& wanted = each.occasion;
        if (each.past) {
            continue;
        }
        text += wanted.step != 0          ? "step " + std::to_string(wanted.step)
                : wanted.measurement != 0 ? "measurement " + std::to_string(wanted.measurement)
                                          : CallText(wanted.call, wanted.path) + " number " +
                                                std::to_string(wanted.occurrence);
        text += " of an event, ";
    }
    return text;
}

} // namespace sim
