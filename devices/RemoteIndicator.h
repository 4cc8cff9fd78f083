#pragma once

#include "devices/PinGroup.h"

#include <array>
#include <cstdint>

namespace tavrelin {

/// The LED indicator at the end of a cable, driven over six lines. Failures show in the result and
/// on standard output.
class RemoteIndicator {
  public:
    using LedLines = std::array<wiring::Line, 6>;

    RemoteIndicator() = default;
    RemoteIndicator(const RemoteIndicator&) = delete;
    RemoteIndicator& operator=(const RemoteIndicator&) = delete;
    RemoteIndicator(RemoteIndicator&&) = delete;
    RemoteIndicator& operator=(RemoteIndicator&&) = delete;
    ~RemoteIndicator() = default;

    /// Claims the lines as outputs and shows the idle colour; releases them in their order at the
    /// end, with their levels. A line that somebody else has exported serves as well, and is
    /// unexported with them. An indicator that worked before answers true though a line could not
    /// be set up again.
    bool Init(const LedLines& lines);

    /// Shows colour 0 (idle) to 10; any code above switches all lines low. Stops at the first line
    /// that cannot be written.
    bool SetLEDColors(std::uint32_t code);

    /// Estimates the length of the cable from the voltages that a test colour leaves at its end,
    /// then shows the idle colour; the test colour stays when the voltages cannot be read. Takes
    /// the demultiplexer's lines meanwhile. Without a voltage to divide by, the length is infinite
    /// or not a number; it is stored even when only the idle colour could not be shown.
    bool CalculateCableLength(float& length);

    [[nodiscard]] bool Initialised() const { return initialised_; }

  private:
    bool MeasureCable(float& length);

    bool initialised_ = false;
    PinGroup leds_;
};

} // namespace tavrelin
