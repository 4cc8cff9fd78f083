#pragma once

namespace tavrelin {

/// The sound system's name of the board's codec, as mixer card and as playback device.
inline constexpr const char* kSoundCard = "default";
/// Elements of its mixer.
inline constexpr const char* kOutputSwitch = "Output Mixer HiFi";
inline constexpr const char* kMasterVolume = "Master";

} // namespace tavrelin
