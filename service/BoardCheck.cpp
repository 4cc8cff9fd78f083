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
    const char* cause; // the likely one, where it is missing
    std::function<bool(const std::string& place)> isThere;
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

// A line without edges cannot be set up. One that is exported already is only looked at.
bool IsLine(const wiring::Line& line, const std::string& directory) {
    const SysfsResource resource = SysfsResource::Line(line.bank, line.bit);
    const bool free = !resource.IsExported();
    const bool there = (!free || resource.Export()) && IsReadable(directory + "/edge");
    return (!free || resource.Unexport()) && there;
}

Step LineStep(const wiring::Line& line, const std::string& carries) {
    return {LineName(line.bank, line.bit) + ", " + carries, LineDirectory(line.bank, line.bit),
            "named or numbered otherwise, a driver's, without interrupts, or you are not root",
            [line](const std::string& directory) { return IsLine(line, directory); }, true};
}

void AddLines(Steps& steps) {
    steps.push_back({"lines", kGpioClass, "no CONFIG_GPIO_SYSFS in the kernel", IsReadable});
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
    steps.push_back({"PWM controller", kPwmController,
                     "no driver, disabled in the device tree, or not the first one", IsReadable});
    steps.push_back({"its four channels", std::string(kPwmController) + "npwm",
                     "another controller comes first", CountsAllChannels, true});
    steps.push_back({"optical converter", kConverterDevice,
                     "no CONFIG_SPI_SPIDEV, or the bus has another number", IsCharacterDevice});
    steps.push_back({"SD card", card::kPresenceDirectory,
                     "no card in the slot, no driver, or another card comes first", IsReadable});
    steps.push_back({"its partition", card::kPartition, "the card has none", IsBlockDevice, true});
    steps.push_back({"mount table", kMountTable, "no link to /proc/self/mounts", IsReadable});
    steps.push_back({"board's own converter", ADC::ReferencePath(),
                     "no driver, or another one comes first", IsReadable});
    steps.push_back({"registers", kMemoryDevice, "no CONFIG_DEVMEM", IsCharacterDevice});
    for (const char* element : {kOutputSwitch, kMasterVolume}) {
        steps.push_back({"mixer", element,
                         "no sound card, another one comes first, or its driver "
                         "names it otherwise",
                         IsMixerElement});
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
        const bool there = step.isThere(step.place);
        PrintStep(there ? "ok" : "missing", step, there ? "" : std::string(": ") + step.cause);
        wholeThere = step.isPart || there;
        allThere = allThere && there;
    }
    return StatusOf(allThere);
}

} // namespace tavrelin::service
