// A playback device for a machine without a sound card, as a plugin of the sound library: appends
// every sample that it is given to a file or FIFO. In a configuration of the sound library:
//
//     pcm_type.tavrelin_capture { lib "FOLDER/libasound_module_pcm_tavrelin_capture.so" }
//     pcm.default { type tavrelin_capture  file "FILE" }
//
// and where wanted
//
//     paced 1              playing takes its time, passed by nanosleep
//     rate 48000           the one rate that the device has, in frames per second
//     period 256           the one period, in frames
//     buffer 512           the one buffer, in frames
//     underrun_after 6400  once this many frames were given to it, the device has run dry, once

#include "tests/devices/sound/plugins/CaptureDevice.h"
#include "tests/devices/sound/plugins/PluginOptions.h"

#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>

namespace {

using tavrelin::CaptureDevice;
using tavrelin::PluginOptions;

struct Range {
    unsigned int least;
    unsigned int most;
};

constexpr Range kRates = {8000, 192000}; // frames per second
constexpr Range kPeriods = {32, 1024};   // frames
constexpr Range kBuffers = {64, 4096};   // frames
constexpr Range kPeriodsInBuffer = {2, 128};

/// The device with the sound library's side of it. There is always room for some frames, so
/// whoever polls for room finds the descriptor ready.
struct CapturePlugin {
    explicit CapturePlugin(const PluginOptions& given)
        : options(given), device(given), alwaysReady(::eventfd(0, EFD_CLOEXEC)) {}
    CapturePlugin(const CapturePlugin&) = delete;
    CapturePlugin& operator=(const CapturePlugin&) = delete;
    CapturePlugin(CapturePlugin&&) = delete;
    CapturePlugin& operator=(CapturePlugin&&) = delete;
    ~CapturePlugin() { ::close(alwaysReady); }

    PluginOptions options;
    CaptureDevice device;
    int alwaysReady;
    snd_pcm_ioplug_t side{};
};

CaptureDevice& DeviceOf(const snd_pcm_ioplug_t* side) {
    return static_cast<CapturePlugin*>(side->private_data)->device;
}

int Prepare(snd_pcm_ioplug_t* side) {
    DeviceOf(side).Prepare(side->buffer_size, side->rate);
    return 0;
}

int Start(snd_pcm_ioplug_t* side) {
    DeviceOf(side).Start();
    return 0;
}

int Stop(snd_pcm_ioplug_t* /*side*/) {
    return 0;
}

snd_pcm_sframes_t Take(snd_pcm_ioplug_t* side, const snd_pcm_channel_area_t* areas,
                       snd_pcm_uframes_t offset, snd_pcm_uframes_t frames) {
    return DeviceOf(side).Take(
        static_cast<const char*>(areas->addr) + offset * CaptureDevice::kFrameBytes, frames);
}

// Place in the buffer, or an error: the device ran dry.
snd_pcm_sframes_t Position(snd_pcm_ioplug_t* side) {
    if (DeviceOf(side).RunsDry()) {
        return -EPIPE;
    }
    return static_cast<snd_pcm_sframes_t>(DeviceOf(side).Played() % side->buffer_size);
}

int Drain(snd_pcm_ioplug_t* side) {
    DeviceOf(side).PlayToTheEnd();
    return 0;
}

int Close(snd_pcm_ioplug_t* side) {
    delete static_cast<CapturePlugin*>(side->private_data);
    return 0;
}

constexpr snd_pcm_ioplug_callback_t kCallbacks = [] {
    snd_pcm_ioplug_callback_t callbacks{};
    callbacks.prepare = Prepare;
    callbacks.start = Start;
    callbacks.stop = Stop;
    callbacks.transfer = Take;
    callbacks.pointer = Position;
    callbacks.drain = Drain;
    callbacks.close = Close;
    return callbacks;
}();

void Introduce(CapturePlugin& plugin) {
    plugin.side.version = SND_PCM_IOPLUG_VERSION;
    plugin.side.name = "Capture of what is played";
    plugin.side.poll_fd = plugin.alwaysReady;
    plugin.side.poll_events = POLLOUT;
    plugin.side.callback = &kCallbacks;
    plugin.side.private_data = &plugin;
}

int Constrain(CapturePlugin& plugin, int what, const char* option, Range all, unsigned int unit) {
    return snd_pcm_ioplug_set_param_minmax(&plugin.side, what,
                                           plugin.options.Number(option, all.least) * unit,
                                           plugin.options.Number(option, all.most) * unit);
}

bool Constrain(CapturePlugin& plugin) {
    const std::array<unsigned int, 1> access = {SND_PCM_ACCESS_RW_INTERLEAVED};
    const std::array<unsigned int, 1> format = {SND_PCM_FORMAT_S16_LE};
    constexpr unsigned int kFrame = CaptureDevice::kFrameBytes;
    return snd_pcm_ioplug_set_param_list(&plugin.side, SND_PCM_IOPLUG_HW_ACCESS, access.size(),
                                         access.data()) >= 0 &&
           snd_pcm_ioplug_set_param_list(&plugin.side, SND_PCM_IOPLUG_HW_FORMAT, format.size(),
                                         format.data()) >= 0 &&
           snd_pcm_ioplug_set_param_minmax(&plugin.side, SND_PCM_IOPLUG_HW_CHANNELS, 2, 2) >= 0 &&
           Constrain(plugin, SND_PCM_IOPLUG_HW_RATE, "rate", kRates, 1) >= 0 &&
           Constrain(plugin, SND_PCM_IOPLUG_HW_PERIOD_BYTES, "period", kPeriods, kFrame) >= 0 &&
           Constrain(plugin, SND_PCM_IOPLUG_HW_BUFFER_BYTES, "buffer", kBuffers, kFrame) >= 0 &&
           Constrain(plugin, SND_PCM_IOPLUG_HW_PERIODS, "periods", kPeriodsInBuffer, 1) >= 0;
}

} // namespace

extern "C" {

SND_PCM_PLUGIN_DEFINE_FUNC(tavrelin_capture) {
    static_cast<void>(root);
    auto plugin = std::make_unique<CapturePlugin>(PluginOptions(conf));
    if (stream != SND_PCM_STREAM_PLAYBACK || !plugin->device.HasFile()) {
        SNDERR("tavrelin_capture: plays only, and needs a file that it can append to");
        return -EINVAL;
    }
    Introduce(*plugin);
    if (const int error = snd_pcm_ioplug_create(&plugin->side, name, stream, mode); error < 0) {
        return error;
    }
    // From here on the sound library ends the plugin's life, through Close.
    snd_pcm_ioplug_t& side = plugin.release()->side;
    if (!Constrain(*static_cast<CapturePlugin*>(side.private_data))) {
        snd_pcm_ioplug_delete(&side);
        return -EINVAL;
    }
    *pcmp = side.pcm;
    return 0;
}

SND_PCM_PLUGIN_SYMBOL(tavrelin_capture)
}
