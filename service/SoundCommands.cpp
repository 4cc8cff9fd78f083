// Commands that are heard.

#include "devices/Codec.h"
#include "devices/Speaker.h"
#include "service/Commands.h"
#include "service/Diagnostics.h"
#include "service/StopSignal.h"

#include <unistd.h>

#include <iostream>

namespace tavrelin::service {

namespace {

constexpr const char* kAlarmFile = "alarm.wav";
constexpr const char* kAlarmFolder = "/usr/share/tavrelin"; // where the package puts it

bool AlarmFileIsHere() {
    return ::access(kAlarmFile, R_OK) == 0;
}

// The player looks in the working directory, which becomes that of the file.
bool GoWhereTheAlarmFileIs() {
    if (AlarmFileIsHere() || (::chdir(kAlarmFolder) == 0 && AlarmFileIsHere())) {
        return true;
    }
    std::cerr << "tavrelin-service alarm: no " << kAlarmFile << ", neither here nor in "
              << kAlarmFolder << "\n";
    return false;
}

} // namespace

int AlarmCommand(const Arguments& arguments) {
    constexpr std::uint32_t alarmSeconds = 3;
    if (!arguments.empty() && arguments.front() != "--for") {
        return WrongUsage("alarm", "takes --for SECONDS and no file name, but got '" +
                                       arguments.front() + "'");
    }
    const auto seconds = SecondsOf("alarm", arguments, alarmSeconds);
    if (!seconds) {
        return kWrongUsage;
    }
    if (!GoWhereTheAlarmFileIs()) {
        return kFailed;
    }
    // Before there is a child, which would play on for ever if this ended without stopping it.
    CatchStopSignals();
    Speaker speaker;
    const bool started = SoundAlarm(&speaker);
    if (started) {
        WaitSecondsOrStopSignal(*seconds);
        speaker.Stop();
    }
    return StatusOf(started);
}

int ToneCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("tone", arguments)) {
        return *status;
    }
    return StatusOf(Codec().Play());
}

int VolumeCommand(const Arguments& arguments) {
    const auto percent = arguments.size() == 1
                             ? WholeNumber<std::uint32_t>(arguments.front(), 0, 100)
                             : std::nullopt;
    if (!percent) {
        return WrongUsage("volume", "takes one PERCENT, a whole number from 0 to 100");
    }
    // Each is of use without the other: a card may lack the switch.
    const Codec codec;
    const bool on = codec.Unmute();
    const bool set = codec.SetVolume(Codec::kAllChannels, *percent);
    return StatusOf(on && set);
}

} // namespace tavrelin::service
