#pragma once

#include <cstdint>

namespace tavrelin {

/// The board's audio codec, straight through the sound library. Each operation opens, uses and
/// closes mixer or playback device for itself, and reports a failure by its result and one line on
/// standard output. Takes no lock.
class Codec {
  public:
    /// Volume selectors; any other number is front right.
    static constexpr std::uint32_t kFrontLeft = 0;
    static constexpr std::uint32_t kAllChannels = 2;

    /// Ready when there is a sound card; without one every operation fails at once.
    Codec();

    /// Switches the output on. True when both front channels then say so.
    [[nodiscard]] bool Unmute() const;

    /// Sets the master volume to `percent` (0 to 100) of its highest value. The range's lowest
    /// value does not count: 0 percent is the value 0.
    [[nodiscard]] bool SetVolume(std::uint32_t selector, std::uint32_t percent) const;

    /// Plays a rising test tone and waits for its end, some 5 s.
    [[nodiscard]] bool Play() const;

    [[nodiscard]] bool Ready() const { return ready_; }

  private:
    bool ready_;
};

} // namespace tavrelin
