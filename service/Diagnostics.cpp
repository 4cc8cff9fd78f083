#include "service/Diagnostics.h"

#include "base/Console.h"
#include "base/NumberText.h"
#include "cycle/StateTable.h"
#include "devices/IndicatorWiring.h"
#include "devices/RemoteIndicator.h"
#include "devices/Speaker.h"

#include <cstdint>
#include <string>

namespace tavrelin {

namespace {

constexpr std::uint32_t kAlarmVolume = 100; // percent
constexpr std::uint32_t kAlarmPause = 0;    // microseconds
constexpr std::uint32_t kStartColor = 1;

const char* FlagText(bool flag) {
    return flag ? "1" : "0";
}

void PrintStep(const StateTable& table) {
    PrintLine("Description:        " + table.Description());
    PrintLine("Step:               " + std::to_string(table.Step()));
    PrintLine("MotorAngle:         " + GeneralText(static_cast<double>(table.MotorAngle())));
    PrintLine("Duration:           " + std::to_string(table.Duration()));
    PrintLine(std::string("LED Status:         ") + FlagText(table.LEDStatus()));
    PrintLine(std::string("Stirring Status:    ") + FlagText(table.StirringStatus()));
    PrintLine(std::string("SRVD Status:        ") + FlagText(table.SRVDStatus()));
    PrintLineAndFlush(std::string("ADC Monitor Status: ") + FlagText(table.ADCMonitorStatus()) +
                      "\n\n");
}

} // namespace

void PrintStateTable() {
    StateTable table;
    PrintLine("Number of states: " + std::to_string(table.Count()));
    PrintLine("Maximum Number of States Possible:  " + std::to_string(StateTable::MaximumCount()) +
              "\n\n");
    for (std::uint32_t steps = 2 * table.Count(); steps > 0; --steps) {
        PrintStep(table);
        table.Next();
    }
}

bool SoundAlarm(Speaker* speaker) {
    if (speaker == nullptr) {
        return false;
    }
    // Neither is a reason not to play: the alarm may be heard all the same.
    Speaker::SetMute(true);
    Speaker::SetVolume(kAlarmVolume, kAlarmVolume);
    return speaker->Play("alarm.wav", kAlarmPause);
}

bool StartIndicator(RemoteIndicator* indicator) {
    if (indicator == nullptr) {
        return false;
    }
    indicator->Init(wiring::kIndicatorLeds);
    indicator->SetLEDColors(kStartColor);
    return true;
}

} // namespace tavrelin
