#pragma once

#include "simulator/board/Board.h"
#include "simulator/kernel/EventLog.h"
#include "simulator/kernel/Kernel.h"
#include "simulator/run/ConsoleWatch.h"
#include "simulator/run/RunOptions.h"
#include "simulator/run/RunReport.h"
#include "simulator/run/Waveform.h"
#include "simulator/time/Futexes.h"
#include "simulator/time/RunEnd.h"
#include "simulator/time/Scheduler.h"
#include "simulator/time/Timeline.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace sim {

/// One simulated board under one program: while it lives, the thread that made it and all threads
/// that descend from it are scheduled by it and see its board. At most one lives at a time.
class Simulation {
  public:
    /// What goes into files passes through the given buffers, or through some of its own.
    explicit Simulation(const RunOptions& options, RunBuffers* buffers = nullptr);
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;
    ~Simulation();

    /// The one that lives, if the calling thread takes part in it.
    static Simulation* OfThisThread();
    /// The one that lives, or in a process just forked off from its own lived; null for none.
    static Simulation* Living();

    /// The calling process, just forked off, takes no further part.
    void Leave();
    /// Hands what the program shows on standard output on to the stream, up to a limit on steps or
    /// measurements that is reached in it.
    void Show(const void* data, std::size_t size, FILE* stream);
    /// Gives others their chance before a thread shows a text, and tells of it where that is asked
    /// for.
    void AboutToShow(std::string_view text, const char* stream);
    /// Has the stream written out. Result as of fflush; an output that takes no more ends the run.
    int Flush(FILE* stream);
    /// Hands on what may have been held back, for a run that ends otherwise.
    void ShowHeld(FILE* stream);

  private:
    std::unique_ptr<RunBuffers> ownBuffers_;

  public:
    /// Called when the program ends, if set.
    std::function<void()> onExit;
    /// Called with what was handed on, if set.
    std::function<void(std::string_view)> onShow;
    RunEnd end; ///< how is to be set before the program does anything
    EventLog events;
    Board board;
    Scheduler scheduler;
    Timeline timeline;
    Futexes futexes{scheduler};
    Kernel kernel;
    ConsoleWatch console;
    Waveform waves{board, console};

  private:
    void HandOn(std::string_view text, FILE* stream);
    void CheckOutput();
    void AwaitOccasions(const Scenario& scenario);

    bool outputLost_ = false;
    bool tellsShown_;
};

} // namespace sim
