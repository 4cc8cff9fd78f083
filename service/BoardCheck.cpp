// Is all there that the instrument is made of? Looks, and moves nothing.

#include "base/Console.h"
#include "devices/ADC.h"
#include "devices/IndicatorWiring.h"
#include "devices/MixerElement.h"
#include "devices/RunWiring.h"
#include "devices/SoundCard.h"
#include "platform/AttributeFile.h"
#include "platform/MappedRegisters.h"
#include "platform/SpiDevice.h"
#include "platform/SysfsNames.h"
#include "platform/SysfsResource.h"
#include "service/Commands.h"
#include "storage/CardSettings.h"
#include "storage/FileStatus.h"
#include "storage/MountTableFile.h"

#include <algorithm>
#include <functional>

namespace tavrelin::service {

namespace {

struct Step {
    std::string what;
    std::string place;
    // Null for what is there, else the likely cause.
    std::function<const char*(const std::string& place)> whyMissing;
    bool isPart = false; // of the last that is none: not tried where that is missing
};
using Steps = std::vector<Step>;

bool IsReadable(const std::string& path) {
    return AttributeDirectoryExists(path);
}

bool IsCharacterDevice(const std::string& path) {
    return FileStatus(path).is_character_device(path);
}

bool IsBlockDevice(const std::string& path) {
    return FileStatus(path).is_block_device(path);
}

bool IsMixerElement(const std::string& name) {
    return MixerElement(name.c_str()).Get() != nullptr;
}

bool CountsAllChannels(const std::string& attribute) {
    const auto count = WholeNumber<std::size_t>(ReadAttributeWord(attribute).value_or(""));
    return count && *count >= wiring::kRunChannels.size();
}

auto Unless(bool (*isThere)(const std::string& place), const char* cause) {
    return [=](const std::string& place) { return isThere(place) ? nullptr : cause; };
}

// One that is exported already is only looked at.
const char* WhyNoLine(const wiring::Line& line, const std::string& directory) {
    const SysfsResource resource = SysfsResource::Line(line.bank, line.bit);
    const bool free = !resource.IsExported();
    if (free && !resource.Export()) {
        return "named or numbered otherwise, taken by a driver, or you are not root";
    }
    // Without it a line cannot be set up, though no edge is waited for.
    const bool hasEdge = IsReadable(directory + "/edge");
    if (free && !resource.Unexport()) {
        return "cannot be given back";
    }
    return hasEdge ? nullptr : "has no edge: its port is without interrupts";
}

Step LineStep(const wiring::Line& line, const std::string& carries) {
    return {LineName(line.bank, line.bit) + ", " + carries, LineDirectory(line.bank, line.bit),
            [line](const std::string& directory) { return WhyNoLine(line, directory); }, true};
}

void AddLines(Steps& steps) {
    steps.push_back(
        {"lines", kGpioClass, Unless(IsReadable, "no CONFIG_GPIO_SYSFS in the kernel")});
    for (const wiring::RunLine& own : wiring::kRunLines) {
        steps.push_back(LineStep(own.line, own.carries));
    }
    for (const wiring::Line& line : wiring::kDemultiplexerSelect) {
        steps.push_back(LineStep(line, "demultiplexer"));
    }
    for (const wiring::Line& line : wiring::kIndicatorLeds) {
        steps.push_back(LineStep(line, "remote indicator"));
    }
}

Steps AllSteps() {
    Steps steps;
    AddLines(steps);
    steps.push_back(
        {"PWM controller", kPwmController,
         Unless(IsReadable, "no driver, disabled in the device tree, or not the first one")});
    steps.push_back({"its four channels", std::string(kPwmController) + "npwm",
                     Unless(CountsAllChannels, "another controller comes first"), true});
    steps.push_back(
        {"optical converter", kConverterDevice,
         Unless(IsCharacterDevice, "no CONFIG_SPI_SPIDEV, or the bus has another number")});
    steps.push_back(
        {"SD card", card::kPresenceDirectory,
         Unless(IsReadable, "no card in the slot, no driver, or another card comes first")});
    steps.push_back(
        {"its partition", card::kPartition, Unless(IsBlockDevice, "the card has none"), true});
    steps.push_back(
        {"mount table", kMountTable, Unless(IsReadable, "no link to /proc/self/mounts")});
    steps.push_back({"board's own converter", ADC::ReferencePath(),
                     Unless(IsReadable, "no driver, or another one comes first")});
    steps.push_back({"registers", kMemoryDevice, Unless(IsCharacterDevice, "no CONFIG_DEVMEM")});
    for (const char* element : {kOutputSwitch, kMasterVolume}) {
        steps.push_back(
            {"mixer", element,
             Unless(IsMixerElement, "no sound card, another one comes first, or its driver "
                                    "names it otherwise")});
    }
    return steps;
}

std::string Column(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

void PrintStep(const char* state, const Step& step, const std::string& end) {
    PrintLineAndFlush(Column(state, 9) + Column(step.what, 34) + step.place + end);
}

} // namespace

int BoardCheckCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("board-check", arguments)) {
        return *status;
    }
    bool allThere = true;
    bool wholeThere = true;
    for (const Step& step : AllSteps()) {
        if (step.isPart && !wholeThere) {
            PrintStep("-", step, "");
            continue;
        }
        const char* const cause = step.whyMissing(step.place);
        const bool there = cause == nullptr;
        PrintStep(there ? "ok" : "missing", step, there ? "" : std::string(": ") + cause);
        wholeThere = step.isPart || there;
        allThere = allThere && there;
    }
    return StatusOf(allThere);
}

} // namespace tavrelin::service
