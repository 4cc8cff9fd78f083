#include "devices/TonePlayback.h"

#include "base/Console.h"
#include "devices/SoundCard.h"
#include "devices/ToneGenerator.h"

#include <alsa/asoundlib.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tavrelin {

namespace {

constexpr unsigned int kChannels = 2;
constexpr unsigned int kRate = 18000;            // frames per second
constexpr snd_pcm_uframes_t kPeriodFrames = 128; // asked for; the device may take another
constexpr snd_pcm_uframes_t kFrameBytes = 4;     // a 16-bit sample for each channel
constexpr std::uint32_t kPlayingTime = 5000000;  // microseconds
constexpr double kFirstFrequency = 500.0;        // Hz
constexpr double kFrequencyStep = 50.0;          // Hz per period

struct ClosePcm {
    void operator()(snd_pcm_t* pcm) const { snd_pcm_close(pcm); }
};
using Pcm = std::unique_ptr<snd_pcm_t, ClosePcm>;

struct FreeParameters {
    void operator()(snd_pcm_hw_params_t* parameters) const { snd_pcm_hw_params_free(parameters); }
};
using Parameters = std::unique_ptr<snd_pcm_hw_params_t, FreeParameters>;

Pcm OpenPcm() {
    snd_pcm_t* pcm = nullptr;
    const bool opened = snd_pcm_open(&pcm, kSoundCard, SND_PCM_STREAM_PLAYBACK, 0) >= 0;
    return Pcm(opened ? pcm : nullptr);
}

Parameters NewParameters() {
    snd_pcm_hw_params_t* parameters = nullptr;
    const bool made = snd_pcm_hw_params_malloc(&parameters) >= 0;
    return Parameters(made ? parameters : nullptr);
}

// What the device makes of the wishes. One figure holds the rate, then the buffer's frames, then
// the period's microseconds: a device that does not tell one of them shows the one before.
struct Setup {
    snd_pcm_uframes_t periodFrames = kPeriodFrames;
    unsigned int figure = kRate;
};

bool Negotiate(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters, Setup& setup) {
    return snd_pcm_hw_params_any(pcm, parameters) >= 0 &&
           snd_pcm_hw_params_set_access(pcm, parameters, SND_PCM_ACCESS_RW_INTERLEAVED) >= 0 &&
           snd_pcm_hw_params_set_format(pcm, parameters, SND_PCM_FORMAT_S16_LE) >= 0 &&
           snd_pcm_hw_params_set_channels(pcm, parameters, kChannels) >= 0 &&
           snd_pcm_hw_params_set_rate_near(pcm, parameters, &setup.figure, nullptr) >= 0 &&
           snd_pcm_hw_params_set_period_size_near(pcm, parameters, &setup.periodFrames, nullptr) >=
               0 &&
           snd_pcm_hw_params_get_period_size(parameters, &setup.periodFrames, nullptr) >= 0;
}

// Before the parameters are applied most devices do not know their buffer: that is no failure.
bool ReportSizes(const snd_pcm_hw_params_t* parameters, Setup& setup) {
    snd_pcm_uframes_t bufferFrames = setup.figure;
    if (snd_pcm_hw_params_get_buffer_size(parameters, &bufferFrames) > 0) {
        return false;
    }
    setup.figure = static_cast<unsigned int>(bufferFrames);
    PrintLine("period size = " + std::to_string(setup.periodFrames) + " frames");
    PrintLine("buffer size = " + std::to_string(setup.figure) + " frames");
    return true;
}

bool Apply(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters, Setup& setup) {
    return snd_pcm_hw_params(pcm, parameters) >= 0 &&
           snd_pcm_hw_params_get_period_size(parameters, &setup.periodFrames, nullptr) >= 0 &&
           snd_pcm_hw_params_get_period_time(parameters, &setup.figure, nullptr) >= 0 &&
           setup.figure != 0; // the playing time is divided by it
}

// The texts stand as the instrument has always written them, place holders and all.
void HandleShortfall(snd_pcm_t* pcm, snd_pcm_sframes_t written, snd_pcm_uframes_t wanted) {
    if (written == -EPIPE) {
        PrintLine("underrun occurred\n");
        snd_pcm_prepare(pcm);
    } else if (written < 0) {
        PrintLine("error from writei: %s\n");
    } else if (written > 0 && static_cast<snd_pcm_uframes_t>(written) != wanted) {
        PrintLine("short write, write %d frames\n");
    }
}

void ReportProgress(snd_pcm_sframes_t written, std::uint32_t remaining, double frequency) {
    PrintLine("the return_code:loop are " + std::to_string(written) + ":" +
              std::to_string(remaining));
    std::ostringstream text;
    text << "the frequency is " << frequency;
    PrintLine(text.str());
}

// One period at a time, each from the wave's start and higher than the one before.
void PlayPeriods(snd_pcm_t* pcm, snd_pcm_uframes_t frames, unsigned int periodTime) {
    std::vector<std::uint8_t> buffer(frames * kFrameBytes);
    std::uint32_t loops = kPlayingTime / periodTime;
    PrintLine("the size:val:loops are " + std::to_string(buffer.size()) + ":" +
              std::to_string(periodTime) + ":" + std::to_string(loops));
    double frequency = kFirstFrequency;
    while (loops != 0) {
        double phase = 0.0;
        GenerateTone(buffer.data(), static_cast<std::int32_t>(buffer.size() / 2), frequency,
                     &phase);
        frequency += kFrequencyStep;
        --loops;
        const snd_pcm_sframes_t written = snd_pcm_writei(pcm, buffer.data(), frames);
        HandleShortfall(pcm, written, frames);
        ReportProgress(written, loops, frequency);
    }
}

} // namespace

bool PlayRisingTone() {
    Pcm pcm = OpenPcm();
    const Parameters parameters = NewParameters();
    if (pcm == nullptr || parameters == nullptr) {
        return false;
    }
    Setup setup;
    if (!Negotiate(pcm.get(), parameters.get(), setup) || !ReportSizes(parameters.get(), setup) ||
        !Apply(pcm.get(), parameters.get(), setup)) {
        return false;
    }
    PlayPeriods(pcm.get(), setup.periodFrames, setup.figure);
    // Not drained: what the device has not played yet is dropped.
    return snd_pcm_close(pcm.release()) == 0;
}

} // namespace tavrelin
