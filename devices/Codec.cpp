#include "devices/Codec.h"

#include "base/Console.h"
#include "devices/MixerElement.h"
#include "devices/SoundCard.h"
#include "devices/TonePlayback.h"

#include <alsa/asoundlib.h>

namespace tavrelin {

namespace {

constexpr std::uint32_t kFullVolume = 100; // percent

bool SoundCardExists() {
    snd_ctl_t* card = nullptr;
    return snd_ctl_open(&card, kSoundCard, 0) >= 0 && snd_ctl_close(card) >= 0;
}

bool IsOn(snd_mixer_elem_t* element, snd_mixer_selem_channel_id_t channel) {
    int on = 0;
    return snd_mixer_selem_get_playback_switch(element, channel, &on) >= 0 && on != 0;
}

// Read back, because not every mixer does what it answers.
bool SwitchOn(snd_mixer_elem_t* element) {
    return snd_mixer_selem_has_playback_switch(element) == 1 &&
           snd_mixer_selem_set_playback_switch_all(element, 1) >= 0 &&
           IsOn(element, SND_MIXER_SCHN_FRONT_LEFT) && IsOn(element, SND_MIXER_SCHN_FRONT_RIGHT);
}

bool SwitchOutputOn() {
    MixerElement output(kOutputSwitch);
    const bool on = output.Get() != nullptr && SwitchOn(output.Get());
    return output.Close() && on;
}

bool SetElementVolume(snd_mixer_elem_t* element, std::uint32_t selector, std::uint32_t percent) {
    long minimum = 0;
    long maximum = 0;
    if (snd_mixer_selem_get_playback_volume_range(element, &minimum, &maximum) < 0) {
        return false;
    }
    // Wide enough for the product where a long has 32 bits.
    const auto volume =
        static_cast<long>(std::int64_t{maximum} * std::int64_t{percent} / kFullVolume);
    if (selector == Codec::kAllChannels) {
        return snd_mixer_selem_set_playback_volume_all(element, volume) == 0;
    }
    const auto channel =
        selector == Codec::kFrontLeft ? SND_MIXER_SCHN_FRONT_LEFT : SND_MIXER_SCHN_FRONT_RIGHT;
    return snd_mixer_selem_set_playback_volume(element, channel, volume) == 0;
}

bool SetMasterVolume(std::uint32_t selector, std::uint32_t percent) {
    MixerElement master(kMasterVolume);
    const bool set = master.Get() != nullptr && SetElementVolume(master.Get(), selector, percent);
    return master.Close() && set;
}

bool Reported(bool success, const char* complaint) {
    if (!success) {
        PrintLine(complaint);
    }
    return success;
}

} // namespace

Codec::Codec() : ready_(SoundCardExists()) {}

bool Codec::Unmute() const {
    return Reported(ready_ && SwitchOutputOn(), "Codec::Unmute failed!");
}

bool Codec::SetVolume(std::uint32_t selector, std::uint32_t percent) const {
    return Reported(ready_ && percent <= kFullVolume && SetMasterVolume(selector, percent),
                    "Codec::SetVolume failed!");
}

bool Codec::Play() const {
    return Reported(ready_ && PlayRisingTone(), "Codec::Play failed!");
}

} // namespace tavrelin
