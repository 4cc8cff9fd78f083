#include "tests/support/TestCard.h"

#include <alsa/asoundlib.h>

#include <fstream>

namespace tavrelin {

namespace {

constexpr const char* kPlugins =
    "ctl_type.tavrelin_mixer { lib \"" TAVRELIN_MIXER_PLUGIN "\" }\n"
    "pcm_type.tavrelin_capture { lib \"" TAVRELIN_CAPTURE_PLUGIN "\" }\n";

} // namespace

TestCard::TestCard()
    : configuration_("ALSA_CONFIG_PATH", Path("sound.conf")), capture_(Path("played")) {
    SetMixer(MixerText("0 0", "20 20"));
    Configure();
}

TestCard::~TestCard() {
    snd_config_update_free_global();
}

void TestCard::SetMixer(const std::string& controls) const {
    std::ofstream(Path("mixer")) << controls;
}

std::string TestCard::Mixer() const {
    return TextOf(Path("mixer"));
}

void TestCard::SetPlayback(const std::string& options) {
    options_ = options;
    Configure();
}

std::string TestCard::Played() const {
    return TextOf(capture_);
}

void TestCard::PlayInto(const std::string& path) {
    capture_ = path;
    Configure();
}

void TestCard::TakeAwayMixer() {
    hasMixer_ = false;
    Configure();
}

void TestCard::TakeAwayPlayback() {
    hasPlayback_ = false;
    Configure();
}

// The library keeps what it has read until the file's time differs by a second: make it forget.
void TestCard::Configure() const {
    std::ofstream file(Path("sound.conf"));
    file << kPlugins;
    if (hasMixer_) {
        file << "ctl.default { type tavrelin_mixer state \"" << Path("mixer") << "\" }\n";
    }
    if (hasPlayback_) {
        file << "pcm.default { type tavrelin_capture file \"" << capture_ << "\" " << options_
             << " }\n";
    }
    snd_config_update_free_global();
}

std::string MixerText(const std::string& switches, const std::string& volumes) {
    return "boolean \"Output Mixer HiFi Playback Switch\" " + switches +
           "\ninteger \"Master Playback Volume\" 0 63 " + volumes + "\n";
}

} // namespace tavrelin
