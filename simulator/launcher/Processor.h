#pragma once

#include <sched.h>
#include <sys/types.h>

namespace sim {

/// The one processor that a program is kept on: only one of its threads runs at a time, and on one
/// processor they hand over some twice as fast. When others take its time there, it is let go for a
/// moment and then kept where the kernel has put it.
class Processor {
  public:
    /// Keeps the calling process, and all that it becomes, where it runs now.
    static void StayHere();

    explicit Processor(pid_t program);

    /// Lets the program go, or keeps it again; to be called some times a second.
    void Look();

  private:
    /// Seconds that the program has had and that have passed, until now.
    struct Seconds {
        double had = 0.0;
        double passed = 0.0;
    };

    Seconds UntilNow() const;
    bool Crowded();
    void Keep(const cpu_set_t& processors) const;

    pid_t program_;
    cpu_set_t all_{};
    bool free_ = false;
    unsigned looks_;
    Seconds last_;
};

} // namespace sim
