#pragma once

#include <unistd.h>

namespace tavrelin {

/// Leaves the descriptor 0 free while this lives: the next file that is opened gets it.
class ClosedStandardInput {
  public:
    ClosedStandardInput() : kept_(::dup(STDIN_FILENO)) { ::close(STDIN_FILENO); }
    ClosedStandardInput(const ClosedStandardInput&) = delete;
    ClosedStandardInput& operator=(const ClosedStandardInput&) = delete;
    ~ClosedStandardInput() {
        ::dup2(kept_, STDIN_FILENO);
        ::close(kept_);
    }

  private:
    int kept_;
};

} // namespace tavrelin
