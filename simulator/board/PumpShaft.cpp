#include "simulator/board/PumpShaft.h"

#include <initializer_list>

namespace sim {

void PumpShaft::setPulsePeriod(Nanoseconds now, Nanoseconds period) {
    if (period == period_) {
        return;
    }
    position_ = position(now);
    since_ = now;
    period_ = period;
}

std::int64_t PumpShaft::position(Nanoseconds now) const {
    return period_ == 0 ? position_ : position_ + (now - since_) / period_;
}

bool PumpShaft::onFlag(Nanoseconds now) const {
    const std::int64_t step = position(now) % stepsPerTurn;
    return flagSeen_ && step >= flagFirstStep && step < flagFirstStep + flagSteps;
}

Nanoseconds PumpShaft::nextFlagChange(Nanoseconds now) const {
    if (!turning() || !flagSeen_) {
        return never;
    }
    const std::int64_t here = position(now);
    const std::int64_t turnStart = here - here % stepsPerTurn;
    for (const std::int64_t edge :
         {turnStart + flagFirstStep, turnStart + flagFirstStep + flagSteps,
          turnStart + stepsPerTurn + flagFirstStep}) {
        if (edge > here) {
            return since_ + (edge - position_) * period_;
        }
    }
    return never;
}

} // namespace sim
