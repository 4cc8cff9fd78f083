#pragma once

#include "simulator/board/Board.h"
#include "simulator/kernel/EventLog.h"
#include "simulator/kernel/Faults.h"
#include "simulator/kernel/Kernel.h"
#include "simulator/run/ConsoleWatch.h"
#include "simulator/run/RunOptions.h"
#include "simulator/time/Scheduler.h"
#include "simulator/time/Timeline.h"

#include <functional>
#include <memory>
#include <string>

namespace sim {

/// How a run ended.
enum class Ending { Running, Exited, LimitReached, Deadlock, Unmodelled };

/// One simulated board under one program: while it lives, the thread that made it and all threads
/// that descend from it are scheduled by it and see its board. At most one lives at a time.
class Simulation {
  public:
    /// The lines of an event file pass through the given buffer, or through one of its own.
    explicit Simulation(const RunOptions& options, EventBuffer* eventBuffer = nullptr);
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;
    ~Simulation();

    /// The one that lives, if the calling thread takes part in it.
    static Simulation* OfThisThread();

    /// Called when the run is to end before the program does. Must not return.
    std::function<void(Ending, const std::string&)> end;
    /// Called when the program begins its next step.
    std::function<void(std::uint64_t)> onStep;

    /// The calling process, just forked off, takes no further part.
    void Leave();
    /// Takes what the program shows on standard output and hands it on to the stream, up to a limit
    /// on steps or measurements that is reached in it.
    void Show(const void* data, std::size_t size, FILE* stream);
    /// Hands on what may have been held back, for a run that ends otherwise.
    void ShowHeld(FILE* stream);

    EventLog events;
    Faults faults;
    Board board;
    Scheduler scheduler;
    Timeline timeline;
    Kernel kernel;
    ConsoleWatch console;

  private:
    std::unique_ptr<EventBuffer> ownBuffer_;
};

/// One call of the program into the simulation. Empty when the calling thread takes no part, or
/// when the simulation itself makes the call: then the C library's own function is meant.
class Gate {
  public:
    Gate();
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate();

    explicit operator bool() const { return simulation_ != nullptr; }
    Simulation* operator->() const { return simulation_; }
    Scheduler::Thread& Self() const;

  private:
    Simulation* simulation_;
};

/// A result of the simulated kernel as the C library gives it: -1 and errno for a negated errno.
long AsResult(long result);

} // namespace sim
