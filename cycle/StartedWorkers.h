#pragma once

#include <pthread.h>

#include <array>
#include <cstddef>
#include <optional>

namespace tavrelin {

struct StepRequest;

enum class StepWorker { Stirring, ReagentDelivery, Led, Monitoring, Valve };
inline constexpr std::size_t kStepWorkers = 5;

/// The workers of one step that were started and are not joined yet. Used by the step's thread
/// alone, which must join every worker before the request ends.
class StartedWorkers {
  public:
    struct JoinResult {
        bool joined; ///< the join itself succeeded
        bool ran;    ///< the worker left an address: it came to its end
    };

    /// Starts the worker's thread on the request; false when the system refuses one.
    bool Start(StepWorker worker, void* (*entry)(void*), StepRequest& request);

    [[nodiscard]] std::size_t Count() const;

    /// Waits for the worker's end and forgets the worker; nothing when it is not held.
    std::optional<JoinResult> Join(StepWorker worker);

  private:
    std::array<std::optional<pthread_t>, kStepWorkers> threads_;
};

} // namespace tavrelin
