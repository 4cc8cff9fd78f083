#include "simulator/kernel/Faults.h"

#include "simulator/kernel/EventLog.h"

#include <sstream>

namespace sim {

bool MatchesPath(const std::string& pattern, std::string_view path) {
    if (pattern.empty()) {
        return true;
    }
    if (pattern.back() == '*') {
        return path.substr(0, pattern.size() - 1) ==
               std::string_view(pattern).substr(0, pattern.size() - 1);
    }
    return path == pattern;
}

std::string CallText(const std::string& call, const std::string& path) {
    return call + (path.empty() ? "" : " of " + path);
}

bool Faults::Strikes(const Fault& fault) {
    // With a probability, "once" is the first that is drawn.
    const bool all = fault.forever || (fault.probability < 1.0 && fault.struck == 0);
    const bool due = fault.met == fault.occurrence || (all && fault.met > fault.occurrence);
    constexpr double steps = 0x1.0p53;
    return due && (fault.probability >= 1.0 ||
                   static_cast<double>(noise_.Next() >> 11U) < fault.probability * steps);
}

const Fault* Faults::Meet(std::string_view call, std::string_view path, Nanoseconds now) {
    Fault* hit = nullptr;
    for (Fault& fault : armed_) {
        if (fault.call != call || now < fault.at || now >= fault.until ||
            !MatchesPath(fault.path, path)) {
            continue;
        }
        ++fault.met;
        if (Strikes(fault) && hit == nullptr) {
            hit = &fault;
        }
    }
    if (hit != nullptr) {
        ++hit->struck;
    }
    return hit;
}

std::string Faults::Missing() const {
    std::string text;
    for (std::size_t i = 0; i < armed_.size(); ++i) {
        const Fault& fault = armed_[i];
        if (fault.struck == 0) {
            text += "fault " + std::to_string(i + 1) + " (" + CallText(fault.call, fault.path) +
                    ": " + std::to_string(fault.met) + " of " + std::to_string(fault.occurrence) +
                    "), ";
        }
    }
    return text;
}

std::string Faults::Tables() const {
    std::ostringstream text;
    for (const Fault& fault : armed_) {
        text << "\n[[fault]]\ncall = \"" << fault.call << "\"\n";
        if (!fault.path.empty()) {
            text << "path = " << EventLog::Quoted(fault.path) << "\n";
        }
        text << "met = " << fault.met << "\nstruck = " << fault.struck << "\n";
    }
    return text.str();
}

} // namespace sim
