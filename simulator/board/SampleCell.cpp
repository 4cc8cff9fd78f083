#include "simulator/board/SampleCell.h"

#include <algorithm>

namespace sim {

void SampleCell::setValve(Nanoseconds now, bool open) {
    if (open == open_) {
        return;
    }
    open_ = open;
    if (!open) {
        closedAt_ = now;
    } else if (now - closedAt_ > valveRelease) {
        ++flushes_;
        developingSince_ = never;
    }
}

void SampleCell::pumpTurned(std::int64_t pumpSteps) {
    if (open_) {
        cleanAtStep_ = pumpSteps;
    }
}

void SampleCell::setStirring(Nanoseconds now, bool on, std::int64_t pumpSteps) {
    const bool started = on && !stirring_;
    stirring_ = on;
    if (started && developingSince_ == never && pumpSteps > cleanAtStep_) {
        developingSince_ = now;
    }
}

double SampleCell::absorbance(Nanoseconds now, std::int64_t pumpSteps) const {
    if (developingSince_ == never) {
        return 0.0;
    }
    const double dose =
        std::min(1.0, static_cast<double>(pumpSteps - cleanAtStep_) / fullDoseSteps);
    const double colour = std::min(1.0, static_cast<double>(now - developingSince_) /
                                            static_cast<double>(developmentTime));
    return trueAbsorbance() * dose * colour;
}

double SampleCell::trueAbsorbance() const {
    if (absorbances_.empty()) {
        return 0.0;
    }
    const std::size_t measurement = flushes_ < 2 ? 0 : flushes_ - 2;
    return absorbances_[std::min(measurement, absorbances_.size() - 1)];
}

} // namespace sim
