#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace sim {

/// Reads along what the program shows on standard output, as a person would, and counts the steps
/// that it begins and the measurements that it completes. The last status line of a measurement
/// repeats the text of the step that it ends.
class ConsoleWatch {
  public:
    struct Verdict {
        std::size_t shown = 0; ///< so many bytes of the piece belong to the run
        bool ends = false;     ///< with them the limit is reached
    };

    ConsoleWatch(std::optional<std::uint64_t> steps, std::optional<std::uint64_t> measurements)
        : stepLimit_(steps), measurementLimit_(measurements) {}

    /// Called when a step begins, with its running number from 1.
    std::function<void(std::uint64_t)> onStep;

    bool limited() const { return stepLimit_ || measurementLimit_; }
    /// Takes a piece of output that was shown as a whole.
    Verdict take(std::string_view text);

    std::uint64_t steps() const { return steps_; }
    std::uint64_t measurements() const { return measurements_; }

  private:
    enum class Line { ordinary, lastResult, stepBeyondLimit };

    Line takeLine(std::string_view line, std::size_t begin);
    Line takeMessage(std::string_view message);

    std::optional<std::uint64_t> stepLimit_;
    std::optional<std::uint64_t> measurementLimit_;
    std::string partial_;
    bool inStatus_ = false;
    std::size_t statusBegin_ = 0; ///< where in partial_ the status line began that is being read
    bool stepShown_ = false;      ///< the announced step's own line was seen
    std::string announced_;
    std::uint64_t steps_ = 0;
    std::uint64_t measurements_ = 0;
};

} // namespace sim
