#pragma once

#include "simulator/board/Board.h"
#include "simulator/time/Scheduler.h"

#include <functional>
#include <string>

namespace sim {

/// Board time as the threads of the program spend it: sleeping, working, polling.
class Timeline {
  public:
    Timeline(Board& board, Scheduler& scheduler, Nanoseconds limit, double pace);

    /// Called once, when the limit in board time is reached.
    std::function<void()> onLimit;
    /// Called whenever time has passed.
    std::function<void(Nanoseconds now)> onAdvance;

    Nanoseconds now() const { return board_.now(); }
    /// The calling thread works for a span: time passes, nobody else runs.
    void work(Nanoseconds span) { advanceTo(now() + span); }
    /// The calling thread sleeps until a moment; others run.
    /// With a key, also until somebody wakes it.
    void sleepUntil(Nanoseconds moment, const std::string& reason, const void* key = nullptr);

    /// The calling thread is about to read a line's level once more. After 16 equal reads in a row
    /// each further one costs a growing span of up to 1 ms, cut short where the line may change.
    void pollsLine(unsigned line);
    void lineRead(unsigned line, bool level);
    /// The calling thread looks at a clock. After 1000 looks at one and the same moment each
    /// further one costs as a poll does: else a program that waits for a moment would wait for
    /// ever.
    void looksAtClock();
    /// The calling thread did something else: a poll in progress has ended.
    void busy() { equalReads_ = 0; }

  private:
    void advanceTo(Nanoseconds moment);
    void pause(unsigned before, const std::string& reason);
    void keepPace() const;

    Board& board_;
    Scheduler& scheduler_;
    Nanoseconds limit_;
    double pace_;
    long long realStart_;
    unsigned polledLine_ = ~0U;
    bool polledLevel_ = false;
    unsigned equalReads_ = 0;
    unsigned clockLooks_ = 0;
    Nanoseconds lookedAt_ = 0;
};

} // namespace sim
