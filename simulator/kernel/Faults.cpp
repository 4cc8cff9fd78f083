#include "simulator/kernel/Faults.h"

namespace sim {
namespace {

bool Matches(const std::string& pattern, std::string_view path) {
    if (pattern.empty()) {
        return true;
    }
    if (pattern.back() == '*') {
        return path.substr(0, pattern.size() - 1) ==
               std::string_view(pattern).substr(0, pattern.size() - 1);
    }
    return path == pattern;
}

} // namespace

const Fault* Faults::Meet(std::string_view call, std::string_view path, Nanoseconds now) {
    Fault* hit = nullptr;
    for (Fault& fault : armed_) {
        if (fault.call != call || now < fault.at || !Matches(fault.path, path)) {
            continue;
        }
        ++fault.met;
        const bool due =
            fault.met == fault.occurrence || (fault.forever && fault.met > fault.occurrence);
        if (due && hit == nullptr) {
            hit = &fault;
        }
    }
    if (hit != nullptr) {
        ++hit->struck;
    }
    return hit;
}

} // namespace sim
