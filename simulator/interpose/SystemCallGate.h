#pragma once

#include <csignal>
#include <cstdint>

/// The gate at the system call: where this machine has one, every system call of the simulated
/// program that no stand-in made is looked at before the kernel sees it.
namespace sim::system_calls {

/// From now on the calling thread's system calls come to the gate; false where there is none.
bool Arm();
/// They no longer do.
void Disarm();
bool IsArmed();

/// Has a signal handled by a function whose end does not come to the gate. Past the sanitizers, who
/// keep out all signals meanwhile, the gate's own too.
bool Handle(int signal, void (*handler)(int, siginfo_t*, void*), std::uint64_t keptOut);

/// True while the calling thread is in the middle of the simulation.
bool IsInside();

/// Lets the calling thread's system calls through; gives what Restore takes to undo it.
char Open();
void Restore(char before);
/// Lets them through while it lives.
class Through {
  public:
    Through() : before_(Open()) {}
    Through(const Through&) = delete;
    Through& operator=(const Through&) = delete;
    ~Through() { Restore(before_); }

  private:
    char before_;
};

/// Has them come to the gate, in a thread that is armed; gives what GoOn takes to undo it.
char Shut();
void GoOn(char before);

} // namespace sim::system_calls
