#pragma once

#include "devices/PinGroup.h"

#include <array>
#include <cstdint>

namespace tavrelin {

/// Leads one of several analog signals to the board's own converter: three lines select the channel
/// of a group, and a borrowed line, the analog switch, chooses the group for the time of a reading
/// (high for channels 0 to 7, low for 8 to 15). Failures show in the result and on standard output.
class Demultiplexer {
  public:
    using SelectLines = std::array<wiring::Line, 3>;

    Demultiplexer() = default;
    Demultiplexer(const Demultiplexer&) = delete;
    Demultiplexer& operator=(const Demultiplexer&) = delete;
    Demultiplexer(Demultiplexer&&) = delete;
    Demultiplexer& operator=(Demultiplexer&&) = delete;
    ~Demultiplexer() = default;

    /// Claims the select lines, lowest bit first, as low outputs, and releases them in this order
    /// at the end. A line that somebody else has exported serves as well, and is unexported with
    /// them. Once this has succeeded it always answers true; a line that was lost then shows when
    /// a channel is selected.
    bool Init(const SelectLines& lines);

    /// Selects the channel and sets the switch for it. A channel that does not exist is reported
    /// and goes on as the first of its group.
    bool SelectChannel(std::uint32_t channel, GpioPin* analogSwitch);

    /// Sets the switch for the channel last selected, and notes the level it had. The line is
    /// borrowed until ResetAnalogSwitchState.
    bool SetAnalogSwitch(GpioPin* analogSwitch);

    /// Gives the switch its level back and lets go of it. False when none is held.
    bool ResetAnalogSwitchState();

    /// Selects the channel, reads its voltage and resets the switch, up to the first step that
    /// fails: the switch then stays as it is. The select lines stay on the channel.
    bool ReadVoltage(std::uint32_t channel, GpioPin* analogSwitch, float& voltage);

    [[nodiscard]] bool Initialised() const { return initialised_; }
    /// Channel last asked for.
    [[nodiscard]] std::uint32_t Channel() const { return channel_; }

  private:
    bool initialised_ = false;
    std::uint32_t channel_ = 0;
    std::uint32_t savedSwitchLevel_ = 0;
    GpioPin* analogSwitch_ = nullptr; // borrowed while not null
    PinGroup select_;
};

} // namespace tavrelin
