#include "service/Commands.h"

#include "base/Console.h"
#include "base/NumberText.h"
#include "devices/ADC.h"
#include "devices/Codec.h"
#include "devices/IndicatorWiring.h"
#include "devices/RemoteIndicator.h"
#include "devices/Speaker.h"
#include "service/BufferedLog.h"
#include "service/Diagnostics.h"
#include "service/StopSignal.h"
#include "storage/StorageSpace.h"

#include <cstddef>
#include <cstdint>
#include <iostream>

namespace tavrelin::service {

namespace {

constexpr std::uint32_t kAlarmSeconds = 3;
constexpr std::uint32_t kLongestAlarm = 3600;

int StatusOf(bool success) {
    return success ? kDone : kFailed;
}

void PrintFigure(const std::string& label, float figure) {
    PrintLine(label + GeneralText(static_cast<double>(figure)));
}

// Nothing when the arguments were wrong, which then has been said.
std::optional<std::uint32_t> AlarmTime(const Arguments& arguments) {
    if (arguments.empty()) {
        return kAlarmSeconds;
    }
    if (arguments.front() != "--for") {
        WrongUsage("alarm",
                   "takes --for SECONDS and no file name, but got '" + arguments.front() + "'");
        return std::nullopt;
    }
    const auto seconds = arguments.size() == 2
                             ? WholeNumber<std::uint32_t>(arguments[1], 1, kLongestAlarm)
                             : std::nullopt;
    if (!seconds) {
        WrongUsage("alarm", "--for takes one whole number of seconds from 1 to " +
                                std::to_string(kLongestAlarm));
    }
    return seconds;
}

void ReportPending(std::size_t accepted) {
    const std::size_t pending = BufferedLogPending();
    PrintLine(std::to_string(accepted) + " accepted, " + std::to_string(pending) + " pending");
    if (pending > 0) {
        PrintLine("Only the 240th message writes them to the log: this program's end drops them.");
    }
}

} // namespace

int StateTableCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("state-table", arguments)) {
        return *status;
    }
    PrintStateTable();
    return kDone;
}

int AlarmCommand(const Arguments& arguments) {
    const std::optional<std::uint32_t> seconds = AlarmTime(arguments);
    if (!seconds) {
        return kWrongUsage;
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

int IndicatorCommand(const Arguments& arguments) {
    const auto code =
        arguments.size() == 1 ? WholeNumber<std::uint32_t>(arguments.front()) : std::nullopt;
    if (!code) {
        return WrongUsage("indicator", "takes one CODE, a whole number from 0 to 4294967295");
    }
    RemoteIndicator indicator;
    indicator.Init(wiring::kIndicatorLeds);
    return StatusOf(indicator.SetLEDColors(*code));
}

int CableLengthCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("cable-length", arguments)) {
        return *status;
    }
    RemoteIndicator indicator;
    indicator.Init(wiring::kIndicatorLeds);
    float length = 0.0F;
    const bool measured = indicator.CalculateCableLength(length);
    if (measured) {
        PrintFigure("Cable length: ", length);
    }
    return StatusOf(measured);
}

int StorageCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("storage", arguments)) {
        return *status;
    }
    const mntent* entry = nullptr;
    print_storage_space(entry);
    return kDone;
}

int ReadAdcCommand(const Arguments& arguments) {
    const auto channel =
        arguments.size() == 1 ? WholeNumber<std::int32_t>(arguments.front()) : std::nullopt;
    if (!channel) {
        return WrongUsage("read-adc", "takes one CHANNEL, a whole number from 0 to 11");
    }
    ADC adc;
    float voltage = 0.0F;
    const bool read = adc.Open(*channel) && adc.ReadVoltage(voltage);
    if (read) {
        PrintFigure("Channel " + std::to_string(*channel) + ": ", voltage);
    } else {
        std::cerr << "tavrelin-service read-adc: no voltage from channel " +
                         std::to_string(*channel) + "\n";
    }
    return StatusOf(read);
}

int ToneCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("tone", arguments)) {
        return *status;
    }
    return StatusOf(Codec().Play());
}

int LogMessageCommand(const Arguments& arguments) {
    if (arguments.empty()) {
        return WrongUsage("log-message", "takes at least one TEXT");
    }
    std::size_t accepted = 0;
    for (const std::string& text : arguments) {
        if (BufferedLogWrite(text)) {
            ++accepted;
        } else {
            std::cerr << "tavrelin-service log-message: refused '" + text +
                             "': longer than 29 characters, or the card is not mounted\n";
        }
    }
    ReportPending(accepted);
    return StatusOf(accepted == arguments.size());
}

} // namespace tavrelin::service
