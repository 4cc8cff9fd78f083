// The attributes of each of the board's devices, as SysfsTree finds them.

#include "simulator/kernel/SysfsTree.h"

#include "simulator/board/KernelNumber.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace sim {
namespace {

SysfsNode Attribute(std::function<std::string()> show, std::function<int(std::string_view)> store) {
    SysfsNode node;
    node.kind = SysfsNode::Kind::Attribute;
    node.show = std::move(show);
    node.store = std::move(store);
    return node;
}

template <auto kText, auto kSet>
SysfsNode LineAttribute(Lines& lines, unsigned line) {
    return Attribute([&lines, line] { return (lines.*kText)(line); },
                     [&lines, line](std::string_view text) { return (lines.*kSet)(line, text); });
}

template <auto kNumber, auto kSet>
SysfsNode ChannelAttribute(PwmChip& chip, unsigned channel) {
    return Attribute(
        [&chip, channel] { return std::to_string(chip.At(channel).*kNumber) + "\n"; },
        [&chip, channel](std::string_view text) { return (chip.*kSet)(channel, text); });
}

SysfsNode Text(std::string text) {
    return Attribute([text = std::move(text)] { return text + "\n"; }, {});
}

std::pair<std::string_view, std::string_view> SplitAtSlash(std::string_view path) {
    const std::size_t slash = path.find('/');
    if (slash == std::string_view::npos) {
        return {path, {}};
    }
    return {path.substr(0, slash), path.substr(slash + 1)};
}

} // namespace

SysfsNode SysfsTree::Card(std::string_view rest) const {
    const CardSlot& card = board_.card;
    if (!card.Listed(board_.Now())) {
        return {};
    }
    if (rest.empty()) {
        return SysfsNode::Directory(true);
    }
    const auto [folder, name] = SplitAtSlash(rest);
    const bool ofPartition = folder == "mmcblk0p1" && card.partitioned;
    if (ofPartition && name.empty()) {
        return SysfsNode::Directory();
    }
    const std::string_view attribute = ofPartition ? name : rest;
    const std::string minor = ofPartition ? "1" : "0";
    if (attribute == "dev") {
        return Text("179:" + minor);
    }
    if (attribute == "ro") {
        return Text(card.writeProtected ? "1" : "0");
    }
    if (attribute == (ofPartition ? "partition" : "removable")) {
        return Text(minor);
    }
    return OfEveryDevice(attribute, "MAJOR=179\nMINOR=" + minor + "\nDEVNAME=mmcblk0" +
                                        (ofPartition ? "p1\nDEVTYPE=partition\nDISKSEQ=1\nPARTN=1\n"
                                                     : "\nDEVTYPE=disk\nDISKSEQ=1\n"));
}

SysfsNode SysfsTree::OfEveryDevice(std::string_view name, const std::string& uevent) {
    if (name == "uevent") {
        return Attribute([uevent] { return uevent; },
                         [](std::string_view text) {
                             using namespace std::string_view_literals;
                             static constexpr std::array actions{"add"sv,  "remove"sv, "change"sv,
                                                                 "move"sv, "online"sv, "offline"sv,
                                                                 "bind"sv, "unbind"sv};
                             const auto word = WithoutNewline(text);
                             return std::ranges::count(actions, word) != 0 ? 0 : EINVAL;
                         });
    }
    if (name == "power") {
        return SysfsNode::Directory();
    }
    return name == "subsystem" || name == "device" ? SysfsNode::Directory(true) : SysfsNode();
}

SysfsNode SysfsTree::Gpio(std::string_view rest) const {
    Lines& lines = board_.lines;
    if (rest.empty()) {
        return SysfsNode::Directory();
    }
    if (rest == "export") {
        return Attribute({}, [&lines](std::string_view text) { return lines.ExportLine(text); });
    }
    if (rest == "unexport") {
        return Attribute({}, [&lines](std::string_view text) { return lines.UnexportLine(text); });
    }
    const auto [folder, name] = SplitAtSlash(rest);
    if (folder == "gpiochip0") {
        return GpioChip(name);
    }
    const auto line =
        folder.substr(0, 3) == "pio" ? Lines::Number(folder.substr(3)) : std::optional<unsigned>{};
    if (!line || !lines.At(*line).exported) {
        return {};
    }
    SysfsNode node = name.empty() ? SysfsNode::Directory(true) : GpioAttribute(*line, name);
    node.instance = lines.At(*line).exports;
    return node;
}

SysfsNode SysfsTree::GpioChip(std::string_view name) {
    if (name.empty()) {
        return SysfsNode::Directory(true);
    }
    if (name == "base") {
        return Text("0");
    }
    if (name == "ngpio") {
        return Text(std::to_string(Lines::kCount));
    }
    return name == "label" ? Text("pio") : OfEveryDevice(name);
}

SysfsNode SysfsTree::GpioAttribute(unsigned line, std::string_view name) const {
    if (name == "direction") {
        return LineAttribute<&Lines::DirectionText, &Lines::SetDirection>(board_.lines, line);
    }
    if (name == "edge") {
        return LineAttribute<&Lines::EdgeText, &Lines::SetEdge>(board_.lines, line);
    }
    if (name == "active_low") {
        return LineAttribute<&Lines::ActiveLowText, &Lines::SetActiveLow>(board_.lines, line);
    }
    if (name == "value") {
        SysfsNode node = LineAttribute<&Lines::ValueText, &Lines::SetValue>(board_.lines, line);
        node.line = line;
        return node;
    }
    return OfEveryDevice(name);
}

SysfsNode SysfsTree::Pwm(std::string_view rest) const {
    PwmChip& chip = board_.pwm;
    if (rest.empty()) {
        return SysfsNode::Directory(true);
    }
    if (rest == "npwm") {
        return Text(std::to_string(PwmChip::kCount));
    }
    if (rest == "export") {
        return Attribute({}, [&chip](std::string_view text) { return chip.ExportChannel(text); });
    }
    if (rest == "unexport") {
        return Attribute({}, [&chip](std::string_view text) { return chip.UnexportChannel(text); });
    }
    const auto [folder, name] = SplitAtSlash(rest);
    const bool proper = folder.size() == 4 && folder.substr(0, 3) == "pwm" && folder[3] >= '0' &&
                        folder[3] < static_cast<char>('0' + PwmChip::kCount);
    const unsigned channel = proper ? static_cast<unsigned>(folder[3] - '0') : 0;
    if (!proper) {
        return OfEveryDevice(rest);
    }
    if (!chip.At(channel).exported) {
        return {};
    }
    SysfsNode node = name.empty() ? SysfsNode::Directory() : PwmAttribute(channel, name);
    node.instance = chip.At(channel).exports;
    return node;
}

SysfsNode SysfsTree::PwmAttribute(unsigned channel, std::string_view name) const {
    if (name == "period") {
        return ChannelAttribute<&PwmOutput::period, &PwmChip::SetPeriod>(board_.pwm, channel);
    }
    if (name == "duty_cycle") {
        return ChannelAttribute<&PwmOutput::duty, &PwmChip::SetDuty>(board_.pwm, channel);
    }
    if (name == "enable") {
        return ChannelAttribute<&PwmOutput::enabled, &PwmChip::SetEnable>(board_.pwm, channel);
    }
    if (name == "polarity") {
        PwmChip& chip = board_.pwm;
        return Attribute(
            [&chip, channel] { return chip.At(channel).inversed ? "inversed\n" : "normal\n"; },
            [&chip, channel](std::string_view text) { return chip.SetPolarity(channel, text); });
    }
    if (name == "capture") {
        SysfsNode node = Text("");
        node.showError = ENOSYS;
        return node;
    }
    return name == "uevent" || name == "power" ? OfEveryDevice(name) : SysfsNode();
}

SysfsNode SysfsTree::Converter(std::string_view rest) const {
    const AnalogFrontEnd& analog = board_.analog;
    if (rest.empty()) {
        return SysfsNode::Directory(true);
    }
    // Both files are open to writers, and the driver takes nothing.
    const auto refuse = [](std::string_view) { return EINVAL; };
    if (rest == "in_voltage_scale") {
        return Attribute([&analog] { return analog.scale + "\n"; }, refuse);
    }
    for (int input = 0; input < AnalogFrontEnd::kInputs; ++input) {
        if (rest == "in_voltage" + std::to_string(input) + "_raw") {
            return Attribute(
                [&analog, input] { return std::to_string(analog.RawCount(input)) + "\n"; }, refuse);
        }
    }
    return OfEveryDevice(rest, "DEVTYPE=iio_device\n");
}

} // namespace sim
