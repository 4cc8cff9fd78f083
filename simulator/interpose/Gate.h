#pragma once

#include "simulator/run/Simulation.h"

#include <cerrno>

namespace sim {

/// One call of the program into the simulation. Empty when the calling thread takes no part, when
/// the simulation itself makes the call, or when it is not about the board: then the C library's
/// own function is meant. While one is held, the thread's system calls are the simulation's own.
class Gate {
  public:
    Gate();
    /// For a call on a path; null is no path of the board.
    explicit Gate(const char* path);
    /// For a call on a descriptor.
    explicit Gate(int descriptor);
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate();

    explicit operator bool() const { return simulation_ != nullptr; }
    Simulation* operator->() const { return simulation_; }
    Simulation& operator*() const { return *simulation_; }
    Scheduler::Thread& Self() const;

  private:
    explicit Gate(Simulation* simulation);

    Simulation* simulation_;
    char before_ = 0; ///< whether the thread's system calls were let through
};

/// A result of the simulated kernel as the C library gives it: -1 and errno for a negated errno.
template <typename Result = int>
Result AsResult(long result) {
    if (result < 0) {
        errno = static_cast<int>(-result);
        return -1;
    }
    return static_cast<Result>(result);
}

} // namespace sim
