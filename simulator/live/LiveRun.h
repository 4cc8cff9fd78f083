#pragma once

#include "simulator/live/LiveLink.h"
#include "simulator/run/Simulation.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace sim {

/// The program's side of a run that is served: shows the board to the launcher and carries out what
/// is done by hand. All of it happens where board time passes anyway; what is done takes effect at
/// a moment to come, as if the scenario had told of it from the beginning.
class LiveRun {
  public:
    /// scenario: the text that the run began with.
    LiveRun(LiveLink& link, Simulation& simulation, std::string scenario, double pace);

    /// Board time has passed: looks for news, and stays here while the run is paused.
    void Look() {
        if (paused_ || link_.news.load(std::memory_order_relaxed) != 0) {
            Attend();
        }
    }
    /// A step begins.
    void StepBegan(std::uint64_t step) { paused_ = paused_ || step == pauseAtStep_; }
    /// The run ends.
    void End() { Publish(); }

  private:
    void Attend();
    void ReadAlong(std::string_view text);
    void ReadLine();
    void Obey();
    /// Takes the last effect of a command: empty, or why it is refused.
    std::string CarryOut(const std::string& command, Nanoseconds& at);
    std::string Meddle(const std::string& table, Nanoseconds at);
    void Publish();
    std::string State() const;
    std::string Faults() const;

    LiveLink& link_;
    Simulation& simulation_;
    std::string scenario_; ///< with all that was done by hand
    double pace_;
    bool paused_ = false;
    std::uint64_t pauseAtStep_ = 0;
    std::uint64_t pauseAtMeasurement_ = 0;
    std::string line_; ///< of the console, under way
    long row_ = 0;     ///< of the program's table
    std::uint64_t measurements_ = 0;
    double chlorine_ = 0.0;
    std::uint64_t readings_ = 0;
    std::int32_t reading_ = 0;
};

} // namespace sim
