#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// One PWM channel; period and duty in nanoseconds.
struct PwmOutput {
    bool exported = false;
    std::uint64_t period = 0;
    std::uint64_t duty = 0;
    bool enabled = false;
    bool inversed = false; ///< polarity
    unsigned exports = 0;  ///< how often it was exported

    bool Pulsing() const { return enabled && period != 0 && duty != 0; }
    double DutyPercent() const;
    /// In hertz, to the thousandth.
    double Frequency() const;
};

/// What an earlier run of the instrument left behind: channels with the period and duty cycle that
/// it gives them.
struct ChannelsSetup {
    std::vector<unsigned> exported;
    std::vector<unsigned> enabled; ///< of these, those that are still on
};

/// The board's PWM controller with the kernel's sysfs stores. Every operation returns 0 or an
/// errno. A fresh channel has period 0 and refuses every write but a valid period.
class PwmChip {
  public:
    static constexpr unsigned kCount = 4;

    explicit PwmChip(const ChannelsSetup& setup);

    /// Called after a channel's output may have changed.
    std::function<void()> onChange;

    int ExportChannel(std::string_view number);
    int UnexportChannel(std::string_view number);
    int SetPeriod(unsigned channel, std::string_view text);
    int SetDuty(unsigned channel, std::string_view text);
    int SetEnable(unsigned channel, std::string_view text);
    int SetPolarity(unsigned channel, std::string_view text);

    PwmOutput& At(unsigned channel) { return outputs_.at(channel); }
    const PwmOutput& At(unsigned channel) const { return outputs_.at(channel); }

  private:
    int Apply(unsigned channel, const PwmOutput& wanted);

    std::array<PwmOutput, kCount> outputs_{};
};

} // namespace sim
