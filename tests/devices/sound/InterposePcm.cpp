// Stands in for the sound library's playback calls: each goes on to the library unless the test
// wants another result.

#include "simulator/libc/Real.h"
#include "tests/devices/sound/InterposeSound.h"

#include <alsa/asoundlib.h>

using tavrelin::SoundCall;

extern "C" {

int snd_pcm_open(snd_pcm_t** pcm, const char* name, snd_pcm_stream_t stream, int mode) {
    const SoundCall call("snd_pcm_open", name, static_cast<int>(stream), mode);
    return call.Acquire([=] { return SIM_REAL(snd_pcm_open)(pcm, name, stream, mode); });
}

int snd_pcm_close(snd_pcm_t* pcm) {
    const SoundCall call("snd_pcm_close");
    return call.Release([=] { return SIM_REAL(snd_pcm_close)(pcm); });
}

int snd_pcm_hw_params_malloc(snd_pcm_hw_params_t** parameters) {
    const SoundCall call("snd_pcm_hw_params_malloc");
    return call.Acquire([=] { return SIM_REAL(snd_pcm_hw_params_malloc)(parameters); });
}

void snd_pcm_hw_params_free(snd_pcm_hw_params_t* parameters) {
    const SoundCall call;
    static_cast<void>(call.Release([=] {
        SIM_REAL(snd_pcm_hw_params_free)(parameters);
        return 0;
    }));
}

int snd_pcm_hw_params_any(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters) {
    const SoundCall call("snd_pcm_hw_params_any");
    return call.Use([=] { return SIM_REAL(snd_pcm_hw_params_any)(pcm, parameters); });
}

int snd_pcm_hw_params_set_access(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                 snd_pcm_access_t access) {
    const SoundCall call("snd_pcm_hw_params_set_access", snd_pcm_access_name(access));
    return call.Use(
        [=] { return SIM_REAL(snd_pcm_hw_params_set_access)(pcm, parameters, access); });
}

int snd_pcm_hw_params_set_format(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                 snd_pcm_format_t format) {
    const SoundCall call("snd_pcm_hw_params_set_format", snd_pcm_format_name(format));
    return call.Use(
        [=] { return SIM_REAL(snd_pcm_hw_params_set_format)(pcm, parameters, format); });
}

int snd_pcm_hw_params_set_channels(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                   unsigned int channels) {
    const SoundCall call("snd_pcm_hw_params_set_channels", channels);
    return call.Use(
        [=] { return SIM_REAL(snd_pcm_hw_params_set_channels)(pcm, parameters, channels); });
}

int snd_pcm_hw_params_set_rate_near(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                    unsigned int* rate, int* direction) {
    const SoundCall call("snd_pcm_hw_params_set_rate_near", *rate);
    return call.Use([=] {
        return SIM_REAL(snd_pcm_hw_params_set_rate_near)(pcm, parameters, rate, direction);
    });
}

int snd_pcm_hw_params_set_period_size_near(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters,
                                           snd_pcm_uframes_t* frames, int* direction) {
    const SoundCall call("snd_pcm_hw_params_set_period_size_near", *frames);
    return call.Use([=] {
        return SIM_REAL(snd_pcm_hw_params_set_period_size_near)(pcm, parameters, frames, direction);
    });
}

int snd_pcm_hw_params_get_period_size(const snd_pcm_hw_params_t* parameters,
                                      snd_pcm_uframes_t* frames, int* direction) {
    const SoundCall call("snd_pcm_hw_params_get_period_size");
    return call.Use(
        [=] { return SIM_REAL(snd_pcm_hw_params_get_period_size)(parameters, frames, direction); });
}

int snd_pcm_hw_params_get_buffer_size(const snd_pcm_hw_params_t* parameters,
                                      snd_pcm_uframes_t* frames) {
    const SoundCall call("snd_pcm_hw_params_get_buffer_size");
    return call.Use(
        [=] { return SIM_REAL(snd_pcm_hw_params_get_buffer_size)(parameters, frames); });
}

int snd_pcm_hw_params_get_period_time(const snd_pcm_hw_params_t* parameters,
                                      unsigned int* microseconds, int* direction) {
    const SoundCall call("snd_pcm_hw_params_get_period_time");
    return call.Use([=] {
        return SIM_REAL(snd_pcm_hw_params_get_period_time)(parameters, microseconds, direction);
    });
}

int snd_pcm_hw_params(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters) {
    const SoundCall call("snd_pcm_hw_params");
    return call.Use([=] { return SIM_REAL(snd_pcm_hw_params)(pcm, parameters); });
}

int snd_pcm_prepare(snd_pcm_t* pcm) {
    const SoundCall call("snd_pcm_prepare");
    return call.Use([=] { return SIM_REAL(snd_pcm_prepare)(pcm); });
}

snd_pcm_sframes_t snd_pcm_writei(snd_pcm_t* pcm, const void* samples, snd_pcm_uframes_t frames) {
    const SoundCall call("snd_pcm_writei", frames);
    return call.Use([=] { return SIM_REAL(snd_pcm_writei)(pcm, samples, frames); });
}

int snd_pcm_drain(snd_pcm_t* pcm) {
    const SoundCall call("snd_pcm_drain");
    return call.Use([=] { return SIM_REAL(snd_pcm_drain)(pcm); });
}

} // extern "C"
