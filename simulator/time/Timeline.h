#pragma once

#include "simulator/board/Board.h"
#include "simulator/time/Scheduler.h"

#include <functional>
#include <string_view>

namespace sim {

/// Board time as the threads of the program spend it: sleeping, working, polling.
class Timeline {
  public:
    /// end: called when the limit in board time is reached.
    Timeline(Board& board, Scheduler& scheduler, Nanoseconds limit, double pace, const RunEnd& end);

    /// Called whenever time has passed.
    std::function<void(Nanoseconds now)> onAdvance;

    Nanoseconds Now() const { return board_.Now(); }
    /// Others run while the calling thread works, as if each had a processor of its own.
    bool parallel = false;

    /// The calling thread works for a span: time passes, nobody else runs unless in parallel.
    void Work(Nanoseconds span) {
        if (parallel && span > 0) {
            scheduler_.SleepUntil(*ThreadSelf(), Now() + span, "the end of its call");
            return;
        }
        const Nanoseconds until = Now() + span;
        do {
            AdvanceTo(until);
        } while (Now() < until);
    }
    /// The calling thread sleeps until a moment; others run.
    /// With a key, also until somebody wakes it.
    void SleepUntil(Nanoseconds moment, std::string_view reason, const void* key = nullptr);
    /// The same, but no longer than to the board's next event; a poll in progress goes on.
    void SleepUntilNews(Nanoseconds moment, std::string_view reason, const void* key = nullptr);
    /// From now on so many board seconds pass in a real one (0: as fast as it goes), in pieces of
    /// at most 20 ms of real time, after each of which onAdvance is called.
    void SetPace(double pace);

    /// The calling thread is about to read a line's level once more. After 16 equal reads in a row
    /// each further one costs a growing span of up to 16 ms, cut short where the line may change.
    void PollsLine(unsigned line);
    void LineRead(unsigned line, bool level);
    /// The calling thread looks at a clock. After 1000 looks at one and the same moment each
    /// further one costs as a poll does: else a program that waits for a moment would wait for
    /// ever.
    void LooksAtClock() { Idles("the clock that it looks at"); }
    /// The calling thread lets others run; yields at one and the same moment cost as looks do.
    void Yields();
    /// The calling thread did something else: its poll in progress has ended.
    void Busy() {
        if (ThreadSelf() == poller_) {
            equalReads_ = 0;
        }
    }

  private:
    void AdvanceTo(Nanoseconds moment);
    void Pause(unsigned before, Nanoseconds longest, std::string_view reason);
    bool Idles(std::string_view reason);
    void KeepPace() const;

    Board& board_;
    Scheduler& scheduler_;
    Nanoseconds limit_;
    double pace_;
    Nanoseconds piece_ = kNever; ///< the longest advance
    const RunEnd& end_;
    long long realStart_;
    const Scheduler::Thread* poller_ = nullptr; ///< the last to read a line
    unsigned polledLine_ = ~0U;
    bool polledLevel_ = false;
    unsigned equalReads_ = 0;
    unsigned idleCalls_ = 0; ///< looks at a clock and yields since board time last passed
    Nanoseconds idleAt_ = 0;
};

} // namespace sim
