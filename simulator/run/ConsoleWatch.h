#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace sim {

/// Reads along what the program shows on standard output, as a person would, and counts the steps
/// that it begins and the measurements that it completes. The last status line of a measurement
/// repeats the text of the step that it ends.
///
/// A status line is two lines of text, and only the second tells whether it announces a step beyond
/// the limit, which is not part of the run. With a limit on steps it is held back until then.
class ConsoleWatch {
  public:
    struct Verdict {
        std::string show;                      ///< text to hand on
        std::optional<std::string_view> limit; ///< which limit is reached with it, if one is
    };

    ConsoleWatch(std::optional<std::uint64_t> steps, std::optional<std::uint64_t> measurements)
        : stepLimit_(steps), measurementLimit_(measurements) {}

    /// Called when a step begins, with its running number from 1.
    std::function<void(std::uint64_t)> onStep;

    /// Reads a piece of output; what follows a limit in it is dropped.
    Verdict Read(std::string_view text);
    /// Gives up what is held back, for a run that ends otherwise.
    std::string Release();

    std::uint64_t Steps() const { return steps_; }
    /// Number and text of the step under way as the program shows them; 0 before the first.
    unsigned StepNumber() const { return stepNumber_; }
    const std::string& StepText() const { return announced_; }
    std::uint64_t Measurements() const { return measurements_; }

  private:
    enum class Line { Ordinary, StatusBegins, LastResult, StepBeyondLimit };

    void ReadPart(std::string_view part, Verdict& verdict);
    Line ReadLine(std::string_view line);
    Line ReadMessage(std::string_view message);
    bool MayBecomeStatus() const;

    std::optional<std::uint64_t> stepLimit_;
    std::optional<std::uint64_t> measurementLimit_;
    std::string line_; ///< the line under way
    std::string held_;
    bool inStatus_ = false;
    bool stepShown_ = false; ///< the announced step's own line was seen
    std::string announced_;
    std::uint64_t steps_ = 0;
    unsigned stepNumber_ = 0;
    std::uint64_t measurements_ = 0;
};

} // namespace sim
