#pragma once

#include "cycle/MeasurementState.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tavrelin {

/// The 17 steps of a measurement in the order in which they run, with a cursor on the current one.
/// An accessor for each field answers for the current step.
class StateTable {
  public:
    /// A fresh table, its cursor on the first step.
    StateTable();

    /// Number of steps.
    [[nodiscard]] std::uint32_t Count() const { return static_cast<std::uint32_t>(rows_.size()); }
    /// Number of steps that the instrument's memory could hold, as its printout shows it.
    static constexpr std::uint32_t MaximumCount() { return 134217727; }

    /// Moves to the next step, after the last one to the first.
    void Next();

    /// The current step; valid until the table goes, whatever the cursor does.
    [[nodiscard]] const MeasurementState& Current() const { return rows_[current_]; }

    [[nodiscard]] std::uint8_t Step() const { return Current().Step; }
    [[nodiscard]] std::uint32_t Duration() const { return Current().Duration; }
    [[nodiscard]] bool LEDStatus() const { return Current().LEDStatus; }
    [[nodiscard]] bool StirringStatus() const { return Current().StirringStatus; }
    [[nodiscard]] bool SRVDStatus() const { return Current().SRVDStatus; }
    [[nodiscard]] bool ADCMonitorStatus() const { return Current().ADCMonitorStatus; }
    [[nodiscard]] bool FindStartPosition() const { return Current().FindStartPosition; }
    [[nodiscard]] float MotorAngle() const { return Current().MotorAngle; }
    [[nodiscard]] std::uint32_t MotorSpeed() const { return Current().MotorSpeed; }
    [[nodiscard]] bool ValveStatus() const { return Current().ValveStatus; }
    [[nodiscard]] std::string Description() const { return Current().Description; }

  private:
    std::vector<MeasurementState> rows_;
    std::size_t current_ = 0;
};

} // namespace tavrelin
