#include "simulator/time/Timeline.h"

#include "simulator/libc/Real.h"
#include "simulator/time/ThreadSelf.h"

#include <algorithm>

namespace sim {
namespace {

constexpr unsigned freeReads = 16;
constexpr Nanoseconds firstPause = microseconds(20);
constexpr Nanoseconds longestPause = milliseconds(1);
constexpr unsigned freeClockLooks = 1000;

} // namespace

Timeline::Timeline(Board& board, Scheduler& scheduler, Nanoseconds limit, double pace)
    : board_(board), scheduler_(scheduler), limit_(limit), pace_(pace),
      realStart_(real::monotonicNanoseconds()) {
    scheduler_.advanceTo = [this](Nanoseconds moment) { advanceTo(moment); };
    scheduler_.now = [this] { return now(); };
}

void Timeline::sleepUntil(Nanoseconds moment, const std::string& reason, const void* key) {
    equalReads_ = 0;
    if (moment > now()) {
        scheduler_.sleepUntil(*threadSelf(), moment, reason, key);
    }
}

void Timeline::advanceTo(Nanoseconds moment) {
    if (moment <= now()) {
        return;
    }
    board_.advanceTo(std::min(moment, limit_));
    if (onAdvance) {
        onAdvance(now());
    }
    keepPace();
    if (now() >= limit_) {
        onLimit();
    }
}

void Timeline::keepPace() const {
    if (pace_ <= 0.0) {
        return;
    }
    const auto due = realStart_ + static_cast<long long>(static_cast<double>(now()) / pace_);
    const long long early = due - real::monotonicNanoseconds();
    if (early > 0) {
        real::sleepFor(early);
    }
}

void Timeline::pollsLine(unsigned line) {
    if (line != polledLine_ || equalReads_ < freeReads) {
        return;
    }
    pause(equalReads_ - freeReads, "a line that it polls");
}

void Timeline::pause(unsigned before, const std::string& reason) {
    board_.settle(); // else what is due now would end every pause before it begins
    const Nanoseconds span = std::min(firstPause << std::min(before, 6U), longestPause);
    const Nanoseconds until = std::min(now() + span, std::max(board_.nextEvent(), now()));
    if (until > now()) {
        scheduler_.sleepUntil(*threadSelf(), until, reason);
    }
}

void Timeline::lineRead(unsigned line, bool level) {
    if (line == polledLine_ && level == polledLevel_) {
        ++equalReads_;
    } else {
        polledLine_ = line;
        polledLevel_ = level;
        equalReads_ = 1;
    }
}

void Timeline::looksAtClock() {
    if (now() != lookedAt_) {
        clockLooks_ = 0;
    }
    if (clockLooks_ >= freeClockLooks) {
        pause(clockLooks_ - freeClockLooks, "the clock that it looks at");
    }
    ++clockLooks_;
    lookedAt_ = now();
}

} // namespace sim
