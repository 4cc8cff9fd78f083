// Stands in for the sound library's mixer calls: each goes on to the library unless the test wants
// another result.

#include "simulator/libc/Real.h"
#include "tests/devices/sound/InterposeSound.h"

#include <alsa/asoundlib.h>

using tavrelin::SoundCall;
using tavrelin::SoundCalls;

extern "C" {

int snd_ctl_open(snd_ctl_t** card, const char* name, int mode) {
    const SoundCall call("snd_ctl_open", name, mode);
    return call.Acquire([=] { return SIM_REAL(snd_ctl_open)(card, name, mode); });
}

int snd_ctl_close(snd_ctl_t* card) {
    const SoundCall call("snd_ctl_close");
    return call.Release([=] { return SIM_REAL(snd_ctl_close)(card); });
}

int snd_mixer_selem_id_malloc(snd_mixer_selem_id_t** id) {
    const SoundCall call("snd_mixer_selem_id_malloc");
    return call.Acquire([=] { return SIM_REAL(snd_mixer_selem_id_malloc)(id); });
}

void snd_mixer_selem_id_free(snd_mixer_selem_id_t* id) {
    const SoundCall call;
    static_cast<void>(call.Release([=] {
        SIM_REAL(snd_mixer_selem_id_free)(id);
        return 0;
    }));
}

int snd_mixer_open(snd_mixer_t** mixer, int mode) {
    const SoundCall call("snd_mixer_open", mode);
    return call.Acquire([=] { return SIM_REAL(snd_mixer_open)(mixer, mode); });
}

int snd_mixer_attach(snd_mixer_t* mixer, const char* card) {
    const SoundCall call("snd_mixer_attach", card);
    return call.Use([=] { return SIM_REAL(snd_mixer_attach)(mixer, card); });
}

int snd_mixer_selem_register(snd_mixer_t* mixer, snd_mixer_selem_regopt* options,
                             snd_mixer_class_t** elements) {
    const SoundCall call("snd_mixer_selem_register");
    return call.Use([=] { return SIM_REAL(snd_mixer_selem_register)(mixer, options, elements); });
}

int snd_mixer_load(snd_mixer_t* mixer) {
    const SoundCall call("snd_mixer_load");
    return call.Use([=] { return SIM_REAL(snd_mixer_load)(mixer); });
}

snd_mixer_elem_t* snd_mixer_find_selem(snd_mixer_t* mixer, const snd_mixer_selem_id_t* id) {
    const SoundCall call("snd_mixer_find_selem", snd_mixer_selem_id_get_name(id),
                         snd_mixer_selem_id_get_index(id));
    return call.Answer() ? nullptr : SIM_REAL(snd_mixer_find_selem)(mixer, id);
}

int snd_mixer_close(snd_mixer_t* mixer) {
    const SoundCall call("snd_mixer_close");
    return call.Release([=] { return SIM_REAL(snd_mixer_close)(mixer); });
}

int snd_mixer_selem_has_playback_switch(snd_mixer_elem_t* element) {
    const SoundCall call("snd_mixer_selem_has_playback_switch");
    return call.Use([=] { return SIM_REAL(snd_mixer_selem_has_playback_switch)(element); });
}

int snd_mixer_selem_set_playback_switch_all(snd_mixer_elem_t* element, int on) {
    const SoundCall call("snd_mixer_selem_set_playback_switch_all", on);
    return call.Use([=] { return SIM_REAL(snd_mixer_selem_set_playback_switch_all)(element, on); });
}

int snd_mixer_selem_get_playback_switch(snd_mixer_elem_t* element,
                                        snd_mixer_selem_channel_id_t channel, int* on) {
    const SoundCall call("snd_mixer_selem_get_playback_switch", static_cast<int>(channel));
    return call.Use([=] {
        const int result = SIM_REAL(snd_mixer_selem_get_playback_switch)(element, channel, on);
        if (SoundCalls* calls = SoundCall::Watched()) {
            *on = calls->SwitchOf(channel).value_or(*on);
        }
        return result;
    });
}

int snd_mixer_selem_get_playback_volume_range(snd_mixer_elem_t* element, long* minimum,
                                              long* maximum) {
    const SoundCall call("snd_mixer_selem_get_playback_volume_range");
    return call.Use([=] {
        return SIM_REAL(snd_mixer_selem_get_playback_volume_range)(element, minimum, maximum);
    });
}

int snd_mixer_selem_set_playback_volume(snd_mixer_elem_t* element,
                                        snd_mixer_selem_channel_id_t channel, long volume) {
    const SoundCall call("snd_mixer_selem_set_playback_volume", static_cast<int>(channel), volume);
    return call.Use(
        [=] { return SIM_REAL(snd_mixer_selem_set_playback_volume)(element, channel, volume); });
}

int snd_mixer_selem_set_playback_volume_all(snd_mixer_elem_t* element, long volume) {
    const SoundCall call("snd_mixer_selem_set_playback_volume_all", volume);
    return call.Use(
        [=] { return SIM_REAL(snd_mixer_selem_set_playback_volume_all)(element, volume); });
}

} // extern "C"
