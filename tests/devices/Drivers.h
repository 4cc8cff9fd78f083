#pragma once

#include "devices/StepperDriverMotor.h"
#include "tests/support/BoardTest.h"
#include "tests/support/BoardWrites.h"
#include "tests/support/InOrder.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tavrelin {

/// The stirrer as the instrument has it: channel 2, enable line B15.
struct Stirrer {
    Stirrer() { driver.SetupEnablePin(1, 15); }

    StepperDriver driver{2};
};

/// The reagent pump as the instrument has it: channel 1, enable line A2, direction line A3,
/// current-limit lines A4 to A6.
struct Pump {
    Pump() {
        motor.SetupPins(0, 2, 0, 3);
        motor.SetupCurrentLimitPins(0, 4, 0, 5, 0, 6, 7);
    }

    StepperDriverMotor motor{1};
};

/// What starts pulses on a channel that has been programmed before, and on one that never was: its
/// first duty cycle is refused.
inline sim::Texts PulsesAgain(const std::string& channel, const std::string& period,
                              const std::string& duty) {
    return {channel + " duty_cycle 0", channel + " period " + period,
            channel + " duty_cycle " + duty, channel + " enable 1"};
}
inline sim::Texts Pulses(const std::string& channel, const std::string& period,
                         const std::string& duty) {
    sim::Texts writes = PulsesAgain(channel, period, duty);
    writes.front() += " EINVAL";
    return writes;
}

/// The stirrer's, at 640 Hz and 50 %, and the pump's, at 1600 Hz and 50 %.
inline const sim::Texts kStirrerPulses = Pulses("pwm2", "1562500", "781250");
inline const sim::Texts kPumpPulses = Pulses("pwm1", "625000", "312500");

/// What drives the pump's current-limit lines 1 to 3 to the levels "101".
inline sim::Texts LimitWrites(const std::string& levels) {
    sim::Texts writes;
    for (std::size_t line = 0; line < levels.size(); ++line) {
        writes.push_back("A" + std::to_string(4 + line) + " value " + levels[line]);
    }
    return writes;
}

/// A driver or motor on its board, set up and what was written for that forgotten. A mutex that a
/// failure leaves locked goes with it.
template <typename Device>
class DeviceTest : public BoardTest {
  protected:
    DeviceTest() { Renew(); }

    /// Device and board anew, for the next of several cases.
    void Renew() {
        device_.reset();
        NewBoard();
        device_.emplace();
        board.Forget();
    }

    [[nodiscard]] std::uint64_t Locks() const { return board.Calls("pthread_mutex_lock"); }
    [[nodiscard]] std::uint64_t Unlocks() const { return board.Calls("pthread_mutex_unlock"); }

  private:
    std::optional<Device> device_;

  protected:
    Device& device = *device_;
};

class StirrerTest : public DeviceTest<Stirrer> {
  protected:
    StepperDriver& stirrer = device.driver;
};

class PumpTest : public DeviceTest<Pump> {
  protected:
    StepperDriverMotor& pump = device.motor;
};

} // namespace tavrelin
