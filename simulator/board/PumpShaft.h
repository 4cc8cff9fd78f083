#pragma once

#include "simulator/board/Nanoseconds.h"

namespace sim {

/// The pump as it stands at the start.
struct PumpSetup {
    bool flagSeen = true; ///< false: the sensor never sees the flag, wherever the shaft stands
    bool onFlag = false;  ///< the flag stands in the sensor
};

/// The reagent pump's shaft: 1600 steps a turn, one step per pulse while the driver chip is
/// enabled. A flag some 15 degrees wide interrupts the home sensor once a turn. Step counts are
/// whole numbers, so that every edge falls on the same nanosecond in every run.
class PumpShaft {
  public:
    static constexpr std::int64_t kStepsPerTurn = 1600;
    static constexpr std::int64_t kFlagFirstStep = 1200; ///< leading edge, from the shaft's zero
    static constexpr std::int64_t kFlagSteps = 67;       ///< 15 degrees

    explicit PumpShaft(const PumpSetup& setup)
        : startStep_(setup.onFlag ? kFlagFirstStep + 1 : 0), position_(startStep_),
          flagSeen_(setup.flagSeen) {}

    /// The pulses' period from now on; 0 stops the shaft.
    void SetPulsePeriod(Nanoseconds now, Nanoseconds period);
    /// Whole steps turned since the start.
    std::int64_t StepsTurned(Nanoseconds now) const { return Position(now) - startStep_; }
    /// The step of the turn, 0 to 1599.
    std::int64_t StepOfTurn(Nanoseconds now) const { return Position(now) % kStepsPerTurn; }
    /// Puts the shaft at a step of the turn, before it has turned at all.
    void PlaceAt(std::int64_t step) { startStep_ = position_ = step; }
    bool Turning() const { return period_ != 0; }
    /// Whether the sensor can see the flag from now on.
    void ShowFlag(bool seen) { flagSeen_ = seen; }
    bool FlagSeen() const { return flagSeen_; }
    /// True while the flag stands in the sensor.
    bool OnFlag(Nanoseconds now) const;
    /// When the sensor's view changes next if nothing else does; kNever for a standing shaft.
    Nanoseconds NextFlagChange(Nanoseconds now) const;

  private:
    std::int64_t Position(Nanoseconds now) const;

    std::int64_t startStep_;
    std::int64_t position_; ///< step count at since_
    Nanoseconds since_ = 0;
    Nanoseconds period_ = 0;
    bool flagSeen_;
};

} // namespace sim
