#include "simulator/board/SampleCell.h"

#include <algorithm>

namespace sim {

void SampleCell::SetValve(Nanoseconds now, bool open) {
    if (open == open_) {
        return;
    }
    open_ = open;
    if (!open) {
        closedAt_ = now;
    } else if (now - closedAt_ > kValveRelease) {
        absorbance_ = NextAbsorbance();
        ++flushes_;
        developingSince_ = kNever;
    }
}

void SampleCell::PumpTurned(std::int64_t pumpSteps) {
    if (open_) {
        cleanAtStep_ = pumpSteps;
    }
}

void SampleCell::SetStirring(Nanoseconds now, bool on, std::int64_t pumpSteps) {
    const bool started = on && !stirring_;
    stirring_ = on;
    if (started && developingSince_ == kNever && pumpSteps > cleanAtStep_) {
        developingSince_ = now;
    }
}

double SampleCell::Absorbance(Nanoseconds now, std::int64_t pumpSteps) const {
    if (developingSince_ == kNever) {
        return 0.0;
    }
    const double dose =
        std::min(1.0, static_cast<double>(pumpSteps - cleanAtStep_) / kFullDoseSteps);
    const double colour = std::min(1.0, static_cast<double>(now - developingSince_) /
                                            static_cast<double>(kDevelopmentTime));
    return TrueAbsorbance() * dose * colour;
}

CellContent SampleCell::Content(Nanoseconds now, std::int64_t pumpSteps) const {
    return {absorbance_, pumpSteps - cleanAtStep_,
            developingSince_ == kNever ? -1 : now - developingSince_};
}

void SampleCell::Fill(const CellContent& content, Nanoseconds now, std::int64_t pumpSteps) {
    absorbance_ = content.absorbance;
    cleanAtStep_ = pumpSteps - content.doseSteps;
    developingSince_ = content.developing < 0 ? kNever : now - content.developing;
}

double SampleCell::NextAbsorbance() const {
    return absorbances_.empty() ? 0.0
                                : absorbances_[std::min(NextPlace(), absorbances_.size() - 1)];
}

void SampleCell::SetNext(double absorbance) {
    absorbances_.resize(std::max(absorbances_.size(), NextPlace() + 1),
                        absorbances_.empty() ? absorbance : absorbances_.back());
    absorbances_[NextPlace()] = absorbance;
}

} // namespace sim
