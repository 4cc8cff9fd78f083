#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tavrelin {

/// One control of a mixer, as its state file has it on one line:
///
///     boolean "Output Mixer HiFi Playback Switch" 0 0
///     integer "Master Playback Volume" 0 63 20 20
///
/// type, name, for an integer the range, then the value of each channel.
struct MixerControl {
    bool isBoolean = true;
    std::string name;
    long minimum = 0;
    long maximum = 1;
    std::vector<long> values;
};

/// A mixer whose controls and values live in a text file, so that several processes see one mixer.
/// Each operation reads the file afresh.
class MixerState {
  public:
    explicit MixerState(std::string path) : path_(std::move(path)) {}

    /// Empty when there is no such file; lines that are none of a control's are passed over.
    [[nodiscard]] std::vector<MixerControl> Read() const;

    /// The control at a position, if there is one.
    [[nodiscard]] std::optional<MixerControl> At(std::size_t position) const;

    /// Changes the values of the control at a position. A reader sees all of it or nothing.
    [[nodiscard]] bool Write(std::size_t position, const std::vector<long>& values) const;

  private:
    std::string path_;
};

} // namespace tavrelin
