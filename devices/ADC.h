#pragma once

#include <cstdint>
#include <string>

namespace tavrelin {

/// One channel of the board's own converter, read through the kernel's industrial-I/O attributes.
/// Made for one reading and dropped; nothing is cached. Failures show in the result and, where the
/// converter is at fault, on standard error.
class ADC {
  public:
    /// Chooses the channel: 0 to 11, a negative one is only found out by the readings. Fails, and
    /// keeps the channel it had, when there is no such channel (silently) or no converter.
    bool Open(std::int32_t channel);

    /// Attribute with the channel's count.
    [[nodiscard]] std::string RawPath() const;
    /// Attribute with the worth of one count, shared by all channels.
    [[nodiscard]] static std::string ReferencePath();

    /// The channel's count, and the worth of one. Silently false without a channel. An attribute
    /// that can be opened but holds no number is no failure: it reads as 0, and a number out of
    /// range as the nearest end of the range.
    bool ReadRaw(std::int32_t& raw) const;
    bool ReadReference(float& reference) const;

    /// Count times worth in the unit that the callers compute with: 1/1024 of the attribute's.
    bool ReadVoltage(float& voltage) const;

    /// -1 until Open chose one.
    [[nodiscard]] std::int32_t Channel() const { return channel_; }

  private:
    std::int32_t channel_ = -1;
};

} // namespace tavrelin
