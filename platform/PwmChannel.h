#pragma once

#include <cstdint>
#include <string>

namespace tavrelin {

/// The code of the first character of the controller's channel count, 0 when the controller is
/// missing: 52 on a controller with 4 channels. It tells a present controller from none.
std::uint8_t ChannelCount();

/// One output of the board's PWM controller, driven through the kernel's sysfs interface: exported
/// at construction, switched off and unexported at destruction. A channel that is exported already
/// makes the construction fail; the object can be used on it all the same, and unexports it at its
/// end. Takes no lock. A failure shows in the result and, where nothing else is said, in a message
/// on standard error.
class PwmChannel {
  public:
    /// Claims the channel and leaves it as it is.
    explicit PwmChannel(std::uint8_t channel);
    /// Claims the channel and starts it at `frequency` Hz and `dutyCycle` percent.
    PwmChannel(std::uint8_t channel, float frequency, float dutyCycle);
    PwmChannel(const PwmChannel&) = delete;
    PwmChannel& operator=(const PwmChannel&) = delete;
    PwmChannel(PwmChannel&&) = delete;
    PwmChannel& operator=(PwmChannel&&) = delete;
    /// A channel that cannot be switched off stays exported.
    ~PwmChannel();

    /// Claims the channel from the kernel; fails on one that is exported, whoever exported it.
    bool Export();
    bool Unexport();

    /// Switches the output; its "not locked yet" goes to standard output.
    bool Enable(bool on);

    /// True also when the state cannot be read, so that callers switch off before they reprogram.
    [[nodiscard]] bool IsEnabled() const;

    /// Stops the channel, programs it and starts it. The figures are written as given, in whole
    /// nanoseconds; only the stored ones are clamped, so callers keep to 1 to 100000000 Hz and 0 to
    /// 100 percent. True, with the channel off, when the period cannot be opened.
    bool SetFrequencyAndDuty(float frequency, float dutyCycle);

    /// Outcome of the construction.
    [[nodiscard]] bool Ok() const { return ok_; }
    [[nodiscard]] std::uint8_t Channel() const { return channel_; }
    /// Figures last asked for, clamped: Hz and percent.
    [[nodiscard]] float Frequency() const { return frequency_; }
    [[nodiscard]] float DutyCycle() const { return dutyCycle_; }

  private:
    bool Accept(std::uint8_t channel);
    void Store(float frequency, float dutyCycle);
    bool Program(float frequency, float dutyCycle);
    [[nodiscard]] std::string ChannelText() const;
    [[nodiscard]] std::string Directory() const;
    [[nodiscard]] bool IsExported() const;

    bool ok_ = false;
    // No controller has a channel ":": a refused object must not stop somebody else's channel.
    std::uint8_t channel_ = 10;
    float frequency_ = 0.0F;
    float dutyCycle_ = 0.0F;
};

} // namespace tavrelin
