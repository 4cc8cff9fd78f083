#pragma once

#include "tests/support/Fifo.h"
#include "tests/support/TestFolder.h"

#include <string>

namespace tavrelin {

/// Stand-ins for `amixer` and `aplay`, first in the search path while this lives. Both tell how
/// they were called as "[tool][argument][argument]"; the player then plays until the test lets it
/// finish.
class StandInTools {
  public:
    StandInTools();

    /// Waits for the next call of a tool.
    [[nodiscard]] std::string NextCall() const { return calls_.Line(); }
    /// Calls that nobody has asked for yet.
    [[nodiscard]] std::string OtherCalls() const { return calls_.Rest(); }
    /// Lets the player that plays come to its end, and waits for that.
    void FinishPlaying() const;
    /// The mixer tool ends with this exit status from now on.
    void FailMixer(int status) const;

  private:
    void Install(const std::string& tool, const std::string& script) const;

    TestTools tools_;
    Fifo calls_;
    Fifo finish_;
};

} // namespace tavrelin
