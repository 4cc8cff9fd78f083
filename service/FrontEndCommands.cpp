// Commands for the remote indicator and the board's own converter.

#include "base/Console.h"
#include "base/NumberText.h"
#include "devices/ADC.h"
#include "devices/IndicatorWiring.h"
#include "devices/RemoteIndicator.h"
#include "service/Commands.h"
#include "service/Diagnostics.h"

#include <iostream>

namespace tavrelin::service {

namespace {

void PrintFigure(const std::string& label, float figure) {
    PrintLine(label + GeneralText(static_cast<double>(figure)));
}

} // namespace

int IndicatorCommand(const Arguments& arguments) {
    RemoteIndicator indicator;
    if (arguments.empty()) {
        return StatusOf(StartIndicator(&indicator));
    }
    const auto code =
        arguments.size() == 1 ? WholeNumber<std::uint32_t>(arguments.front()) : std::nullopt;
    if (!code) {
        return WrongUsage("indicator", "takes one CODE, a whole number from 0 to 4294967295");
    }
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

int ReadAdcCommand(const Arguments& arguments) {
    const auto channel =
        arguments.size() == 1 ? WholeNumber<std::int32_t>(arguments.front(), 0, 11) : std::nullopt;
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

} // namespace tavrelin::service
