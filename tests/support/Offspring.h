#pragma once

#include <sys/types.h>

#include <vector>

namespace tavrelin {

/// The processes that a test has started and those that these have started: who loses its parent
/// becomes a child of the test.
class Offspring {
  public:
    Offspring();
    Offspring(const Offspring&) = delete;
    Offspring& operator=(const Offspring&) = delete;
    /// Ends all that is left.
    ~Offspring() { End(); }

    /// The test's children, dead ones that nobody has reaped among them.
    [[nodiscard]] static std::vector<pid_t> Children();
    /// Neither alive nor dead and unreaped.
    [[nodiscard]] static bool IsGone(pid_t process);

    /// Waits until all children have ended by themselves.
    static void AwaitEnd();
    /// Kills and reaps all that is left.
    static void End();
};

} // namespace tavrelin
