// Stands in for the sound library's playback calls: each goes on to the library unless the test
// wants another result.

#include "simulator/libc/Real.h"
#include "tests/devices/sound/InterposeSound.h"

#include <alsa/asoundlib.h>

using tavrelin::SoundCall;

extern "C" {

int snd_pcm_open(snd_pcm_t** pcm, const char* name, snd_pcm_stream_t stream, int mode) {
    return SoundCall("snd_pcm_open", name, static_cast<int>(stream), mode)
        .Acquire(SIM_REAL(snd_pcm_open), pcm, name, stream, mode);
}

int snd_pcm_close(snd_pcm_t* pcm) {
    return SoundCall("snd_pcm_close").Release(SIM_REAL(snd_pcm_close), pcm);
}

int snd_pcm_hw_params_malloc(snd_pcm_hw_params_t** parameters) {
    return SoundCall("snd_pcm_hw_params_malloc")
        .Acquire(SIM_REAL(snd_pcm_hw_params_malloc), parameters);
}

void snd_pcm_hw_params_free(snd_pcm_hw_params_t* parameters) {
    SoundCall().Free(SIM_REAL(snd_pcm_hw_params_free), parameters);
}

int snd_pcm_hw_params_any(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters) {
    return SoundCall("snd_pcm_hw_params_any").Use(SIM_REAL(snd_pcm_hw_params_any), pcm, parameters);
}

int snd_pcm_hw_params_set_access(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                 snd_pcm_access_t access) {
    return SoundCall("snd_pcm_hw_params_set_access", snd_pcm_access_name(access))
        .Use(SIM_REAL(snd_pcm_hw_params_set_access), pcm, parameters, access);
}

int snd_pcm_hw_params_set_format(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                 snd_pcm_format_t format) {
    return SoundCall("snd_pcm_hw_params_set_format", snd_pcm_format_name(format))
        .Use(SIM_REAL(snd_pcm_hw_params_set_format), pcm, parameters, format);
}

int snd_pcm_hw_params_set_channels(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                   unsigned int channels) {
    return SoundCall("snd_pcm_hw_params_set_channels", channels)
        .Use(SIM_REAL(snd_pcm_hw_params_set_channels), pcm, parameters, channels);
}

int snd_pcm_hw_params_set_rate_near(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                    unsigned int* rate, int* direction) {
    return SoundCall("snd_pcm_hw_params_set_rate_near", *rate)
        .Use(SIM_REAL(snd_pcm_hw_params_set_rate_near), pcm, parameters, rate, direction);
}

int snd_pcm_hw_params_set_period_size_near(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                           snd_pcm_uframes_t* frames, int* direction) {
    return SoundCall("snd_pcm_hw_params_set_period_size_near", *frames)
        .Use(SIM_REAL(snd_pcm_hw_params_set_period_size_near), pcm, parameters, frames, direction);
}

int snd_pcm_hw_params_get_period_size(const snd_pcm_hw_params_t* parameters,
                                      snd_pcm_uframes_t* frames, int* direction) {
    return SoundCall("snd_pcm_hw_params_get_period_size")
        .Use(SIM_REAL(snd_pcm_hw_params_get_period_size), parameters, frames, direction);
}

int snd_pcm_hw_params_get_buffer_size(const snd_pcm_hw_params_t* parameters,
                                      snd_pcm_uframes_t* frames) {
    return SoundCall("snd_pcm_hw_params_get_buffer_size")
        .Use(SIM_REAL(snd_pcm_hw_params_get_buffer_size), parameters, frames);
}

int snd_pcm_hw_params_get_period_time(const snd_pcm_hw_params_t* parameters,
                                      unsigned int* microseconds, int* direction) {
    return SoundCall("snd_pcm_hw_params_get_period_time")
        .Use(SIM_REAL(snd_pcm_hw_params_get_period_time), parameters, microseconds, direction);
}

int snd_pcm_hw_params(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters) {
    return SoundCall("snd_pcm_hw_params").Use(SIM_REAL(snd_pcm_hw_params), pcm, parameters);
}

int snd_pcm_prepare(snd_pcm_t* pcm) {
    return SoundCall("snd_pcm_prepare").Use(SIM_REAL(snd_pcm_prepare), pcm);
}

snd_pcm_sframes_t snd_pcm_writei(snd_pcm_t* pcm, const void* samples, snd_pcm_uframes_t frames) {
    return SoundCall("snd_pcm_writei", frames).Use(SIM_REAL(snd_pcm_writei), pcm, samples, frames);
}

int snd_pcm_drain(snd_pcm_t* pcm) {
    return SoundCall("snd_pcm_drain").Use(SIM_REAL(snd_pcm_drain), pcm);
}

} // extern "C"
