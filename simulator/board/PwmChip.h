#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace sim {

/// One PWM channel; period and duty in nanoseconds.
struct PwmOutput {
    bool exported = false;
    std::uint32_t period = 0;
    std::uint32_t duty = 0;
    bool enabled = false;
    unsigned exports = 0; ///< how often it was exported

    bool pulsing() const { return enabled && period != 0 && duty != 0; }
};

/// The board's PWM controller with the kernel's sysfs stores. Every operation returns 0 or an
/// errno. A fresh channel has period 0 and refuses every write but a valid period.
class PwmChip {
  public:
    static constexpr unsigned count = 4;

    /// Called after a channel's output may have changed.
    std::function<void()> onChange;

    int exportChannel(std::string_view number);
    int unexportChannel(std::string_view number);
    int setPeriod(unsigned channel, std::string_view text);
    int setDuty(unsigned channel, std::string_view text);
    int setEnable(unsigned channel, std::string_view text);

    PwmOutput& at(unsigned channel) { return outputs_.at(channel); }
    const PwmOutput& at(unsigned channel) const { return outputs_.at(channel); }

  private:
    int apply(unsigned channel, const PwmOutput& wanted);

    std::array<PwmOutput, count> outputs_{};
};

} // namespace sim
