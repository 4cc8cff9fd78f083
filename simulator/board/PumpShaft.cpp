#include "simulator/board/PumpShaft.h"

#include <initializer_list>

namespace sim {

void PumpShaft::SetPulsePeriod(Nanoseconds now, Nanoseconds period) {
    if (period == period_) {
        return;
    }
    position_ = Position(now);
    since_ = now;
    period_ = period;
}

std::int64_t PumpShaft::Position(Nanoseconds now) const {
    return period_ == 0 ? position_ : position_ + (now - since_) / period_;
}

bool PumpShaft::OnFlag(Nanoseconds now) const {
    const std::int64_t step = StepOfTurn(now);
    return flagSeen_ && step >= kFlagFirstStep && step < kFlagFirstStep + kFlagSteps;
}

Nanoseconds PumpShaft::NextFlagChange(Nanoseconds now) const {
    if (!Turning() || !flagSeen_) {
        return kNever;
    }
    const std::int64_t here = Position(now);
    const std::int64_t turnStart = here - here % kStepsPerTurn;
    for (const std::int64_t edge :
         {turnStart + kFlagFirstStep, turnStart + kFlagFirstStep + kFlagSteps,
          turnStart + kStepsPerTurn + kFlagFirstStep}) {
        if (edge > here) {
            return since_ + (edge - position_) * period_;
        }
    }
    return kNever;
}

} // namespace sim
