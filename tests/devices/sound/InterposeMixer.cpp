// Stands in for the sound library's mixer calls: each goes on to the library unless the test wants
// another result.

#include "simulator/libc/Real.h"
#include "tests/devices/sound/InterposeSound.h"

#include <alsa/asoundlib.h>

using tavrelin::SoundCall;
using tavrelin::SoundCalls;

extern "C" {

int snd_ctl_open(snd_ctl_t** card, const char* name, int mode) {
    return SoundCall("snd_ctl_open", name, mode).Acquire(SIM_REAL(snd_ctl_open), card, name, mode);
}

int snd_ctl_close(snd_ctl_t* card) {
    return SoundCall("snd_ctl_close").Release(SIM_REAL(snd_ctl_close), card);
}

int snd_mixer_selem_id_malloc(snd_mixer_selem_id_t** id) {
    return SoundCall("snd_mixer_selem_id_malloc").Acquire(SIM_REAL(snd_mixer_selem_id_malloc), id);
}

void snd_mixer_selem_id_free(snd_mixer_selem_id_t* id) {
    SoundCall().Free(SIM_REAL(snd_mixer_selem_id_free), id);
}

int snd_mixer_open(snd_mixer_t** mixer, int mode) {
    return SoundCall("snd_mixer_open", mode).Acquire(SIM_REAL(snd_mixer_open), mixer, mode);
}

int snd_mixer_attach(snd_mixer_t* mixer, const char* card) {
    return SoundCall("snd_mixer_attach", card).Use(SIM_REAL(snd_mixer_attach), mixer, card);
}

int snd_mixer_selem_register(snd_mixer_t* mixer, snd_mixer_selem_regopt* options,
                             snd_mixer_class_t** elements) {
    return SoundCall("snd_mixer_selem_register")
        .Use(SIM_REAL(snd_mixer_selem_register), mixer, options, elements);
}

int snd_mixer_load(snd_mixer_t* mixer) {
    return SoundCall("snd_mixer_load").Use(SIM_REAL(snd_mixer_load), mixer);
}

snd_mixer_elem_t* snd_mixer_find_selem(snd_mixer_t* mixer, const snd_mixer_selem_id_t* id) {
    const SoundCall call("snd_mixer_find_selem", snd_mixer_selem_id_get_name(id),
                         snd_mixer_selem_id_get_index(id));
    return call.Answer() ? nullptr : SIM_REAL(snd_mixer_find_selem)(mixer, id);
}

int snd_mixer_close(snd_mixer_t* mixer) {
    return SoundCall("snd_mixer_close").Release(SIM_REAL(snd_mixer_close), mixer);
}

int snd_mixer_selem_has_playback_switch(snd_mixer_elem_t* element) {
    return SoundCall("snd_mixer_selem_has_playback_switch")
        .Use(SIM_REAL(snd_mixer_selem_has_playback_switch), element);
}

int snd_mixer_selem_set_playback_switch_all(snd_mixer_elem_t* element, int on) {
    return SoundCall("snd_mixer_selem_set_playback_switch_all", on)
        .Use(SIM_REAL(snd_mixer_selem_set_playback_switch_all), element, on);
}

int snd_mixer_selem_get_playback_switch(snd_mixer_elem_t* element,
                                        snd_mixer_selem_channel_id_t channel, int* on) {
    return SoundCall("snd_mixer_selem_get_playback_switch", static_cast<int>(channel)).Use([=] {
        const int result = SIM_REAL(snd_mixer_selem_get_playback_switch)(element, channel, on);
        if (SoundCalls* calls = SoundCall::Watched()) {
            *on = calls->SwitchOf(channel).value_or(*on);
        }
        return result;
    });
}

int snd_mixer_selem_get_playback_volume_range(snd_mixer_elem_t* element, long* minimum,
                                              long* maximum) {
    return SoundCall("snd_mixer_selem_get_playback_volume_range")
        .Use(SIM_REAL(snd_mixer_selem_get_playback_volume_range), element, minimum, maximum);
}

int snd_mixer_selem_set_playback_volume(snd_mixer_elem_t* element,
                                        snd_mixer_selem_channel_id_t channel, long volume) {
    return SoundCall("snd_mixer_selem_set_playback_volume", static_cast<int>(channel), volume)
        .Use(SIM_REAL(snd_mixer_selem_set_playback_volume), element, channel, volume);
}

int snd_mixer_selem_set_playback_volume_all(snd_mixer_elem_t* element, long volume) {
    return SoundCall("snd_mixer_selem_set_playback_volume_all", volume)
        .Use(SIM_REAL(snd_mixer_selem_set_playback_volume_all), element, volume);
}

} // extern "C"
