#include "simulator/time/Timeline.h"

#include "simulator/libc/Real.h"

#include <algorithm>
#include <cmath>

namespace sim {
namespace {

constexpr unsigned kFreeReads = 16;
constexpr Nanoseconds kFirstPause = Microseconds(20);
constexpr Nanoseconds kLongestPause = Milliseconds(1);
constexpr Nanoseconds kLongestLinePause = Milliseconds(16);
constexpr unsigned kFreeIdleCalls = 1000;

} // namespace

Timeline::Timeline(Board& board, Scheduler& scheduler, Nanoseconds limit, double pace,
                   const RunEnd& end)
    : board_(board), scheduler_(scheduler), limit_(limit), pace_(pace), end_(end),
      realStart_(real::MonotonicNanoseconds()) {
    scheduler_.advanceTo = [this](Nanoseconds moment) { AdvanceTo(moment); };
    scheduler_.now = [this] { return Now(); };
}

void Timeline::SleepUntil(Nanoseconds moment, std::string_view reason, const void* key) {
    Busy();
    if (moment > Now()) {
        scheduler_.SleepUntil(*ThreadSelf(), moment, reason, key);
    }
}

void Timeline::SleepUntilNews(Nanoseconds moment, std::string_view reason, const void* key) {
    moment = std::min(moment, board_.NextEvent());
    if (moment > Now()) {
        Scheduler::Thread& self = *ThreadSelf();
        self.awaitsBoard = true;
        scheduler_.SleepUntil(self, moment, reason, key);
        self.awaitsBoard = false;
    }
}

void Timeline::SetPace(double pace) {
    constexpr double longestPiece = 20e6;
    pace_ = pace;
    piece_ = pace > 0.0 ? std::max<Nanoseconds>(std::llround(pace * longestPiece), 1) : kNever;
    if (pace > 0.0) {
        realStart_ = real::MonotonicNanoseconds() -
                     static_cast<long long>(static_cast<double>(Now()) / pace);
    }
}

void Timeline::AdvanceTo(Nanoseconds moment) {
    if (moment <= Now()) {
        return;
    }
    if (piece_ < moment - Now()) {
        moment = Now() + piece_;
    }
    board_.AdvanceTo(std::min(moment, limit_));
    if (onAdvance) {
        onAdvance(Now());
    }
    KeepPace();
    if (Now() >= limit_) {
        end_(Ending::LimitReached, "board time");
    }
}

void Timeline::KeepPace() const {
    if (pace_ <= 0.0) {
        return;
    }
    const auto due = realStart_ + static_cast<long long>(static_cast<double>(Now()) / pace_);
    const long long early = due - real::MonotonicNanoseconds();
    if (early > 0) {
        real::SleepFor(early);
    }
}

void Timeline::PollsLine(unsigned line) {
    const Line& polled = board_.lines.At(line);
    const bool changed = (polled.level != polled.activeLow) != polledLevel_;
    if (line != polledLine_ || equalReads_ < kFreeReads || changed) {
        return;
    }
    Pause(equalReads_ - kFreeReads, kLongestLinePause, "a line that it polls");
}

void Timeline::Pause(unsigned before, Nanoseconds longest, std::string_view reason) {
    board_.Settle(); // else what is due now would end every pause before it begins
    const Nanoseconds span = std::min(kFirstPause << std::min(before, 10U), longest);
    SleepUntilNews(Now() + span, reason);
}

void Timeline::LineRead(unsigned line, bool level) {
    poller_ = ThreadSelf();
    if (line == polledLine_ && level == polledLevel_) {
        ++equalReads_;
    } else {
        polledLine_ = line;
        polledLevel_ = level;
        equalReads_ = 1;
    }
}

bool Timeline::Idles(std::string_view reason) {
    if (Now() != idleAt_) {
        idleCalls_ = 0;
    }
    const bool pauses = idleCalls_ >= kFreeIdleCalls;
    if (pauses) {
        Pause(idleCalls_ - kFreeIdleCalls, kLongestPause, reason);
    }
    ++idleCalls_;
    idleAt_ = Now();
    return pauses;
}

void Timeline::Yields() {
    if (!Idles("the others to which it yields")) {
        scheduler_.Yield(*ThreadSelf());
    }
}

} // namespace sim
