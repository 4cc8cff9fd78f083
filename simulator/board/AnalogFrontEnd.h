#pragma once

#include "simulator/board/Lines.h"

#include <array>
#include <string>

namespace sim {

/// The figures of the analog side, as a scenario sets them and as they stand from then on.
struct AnalogState {
    static constexpr int kInputs = 12;

    double cableLength = 25.0;            ///< in the unit that the instrument's formula gives
    double lampVoltage = 4.0;             ///< signal 2 under the test colour, volts
    std::string scale = "0.0001";         ///< attribute text: 1024ths of a volt per count
    std::array<double, 16> signals{};     ///< voltages of the other signals
    std::array<double, kInputs> direct{}; ///< voltages of the other inputs of the converter
};

/// The analog side: a multiplexer of sixteen signals that three select lines and the analog switch
/// steer to input 6 of the board's own converter, and the remote indicator at the end of its cable.
/// While the indicator shows its test colour, the lamp current drops over the cable: signal 2 is
/// the lamp's voltage, and signal 0 grows with the length of the cable.
class AnalogFrontEnd : public AnalogState {
  public:
    static constexpr int kMultiplexedInput = 6;

    AnalogFrontEnd(const AnalogState& start, const Lines& lines)
        : AnalogState(start), lines_(lines) {}

    /// Volts at an input of the converter.
    double Voltage(int input) const;
    /// The raw count that the converter reports, rounded to the nearest.
    long long RawCount(int input) const;
    /// The signal that the multiplexer passes on, 0 to 15.
    unsigned SelectedSignal() const;
    /// True while the six indicator lines show the test colour, code 1.
    bool ShowsTestColour() const;

  private:
    const Lines& lines_;
};

} // namespace sim
