#include "simulator/kernel/SysfsTree.h"

#include "simulator/board/BoardPaths.h"

#include <algorithm>

namespace sim {
namespace {

SysfsNode Directory(bool link = false) {
    SysfsNode node;
    node.kind = SysfsNode::Kind::Directory;
    node.link = link;
    return node;
}

SysfsNode Missing(bool parentExists) {
    SysfsNode node;
    node.parentExists = parentExists;
    return node;
}

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

/// What follows a folder's name in a path: empty for the folder itself, nothing for a path
/// elsewhere.
std::optional<std::string_view> Below(std::string_view path, std::string_view root) {
    if (path.substr(0, root.size()) != root) {
        return std::nullopt;
    }
    path.remove_prefix(root.size());
    if (path.empty()) {
        return path;
    }
    if (path.front() != '/') {
        return std::nullopt;
    }
    path.remove_prefix(1);
    return path;
}

std::pair<std::string_view, std::string_view> SplitAtSlash(std::string_view path) {
    const std::size_t slash = path.find('/');
    if (slash == std::string_view::npos) {
        return {path, {}};
    }
    return {path.substr(0, slash), path.substr(slash + 1)};
}

} // namespace

SysfsNode SysfsTree::Find(std::string_view path) const {
    SysfsNode node = LookUp(path);
    if (TakenAway(path)) {
        const bool parentTaken = TakenAway(path.substr(0, path.rfind('/')));
        return Missing(!parentTaken &&
                       (node.parentExists || node.kind != SysfsNode::Kind::Missing));
    }
    if (changes_.replaced.empty()) {
        return node;
    }
    if (const std::string* text = Replacement(std::string(path))) {
        node.kind = SysfsNode::Kind::Attribute;
        node.show = [text = *text] { return text; };
    }
    return node;
}

bool SysfsTree::TakenAway(std::string_view path) const {
    return std::any_of(changes_.missing.begin(), changes_.missing.end(),
                       [&](const std::string& folder) { return Below(path, folder).has_value(); });
}

SysfsNode SysfsTree::LookUp(std::string_view path) const {
    if (!board_.present) {
        return Missing(false);
    }
    if (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    if (const auto rest = Below(path, kGpio)) {
        return Gpio(*rest);
    }
    if (const auto rest = Below(path, kPwmChip)) {
        return Pwm(*rest);
    }
    if (const auto rest = Below(path, kAnalogDevice)) {
        return Converter(*rest);
    }
    if (const auto rest = Below(path, kCardBlock)) {
        if (!board_.card.Listed(board_.Now())) {
            return Missing(rest->empty());
        }
        return rest->empty() ? Directory(true) : Missing(true);
    }
    return Missing(false);
}

SysfsNode SysfsTree::Gpio(std::string_view rest) const {
    Lines& lines = board_.lines;
    if (rest.empty()) {
        return Directory();
    }
    if (rest == "export") {
        return Attribute({}, [&lines](std::string_view text) { return lines.ExportLine(text); });
    }
    if (rest == "unexport") {
        return Attribute({}, [&lines](std::string_view text) { return lines.UnexportLine(text); });
    }
    const auto [folder, name] = SplitAtSlash(rest);
    const auto line =
        folder.substr(0, 3) == "pio" ? Lines::Number(folder.substr(3)) : std::optional<unsigned>{};
    if (!line || !lines.At(*line).exported) {
        return Missing(name.empty());
    }
    SysfsNode node = name.empty() ? Directory(true) : GpioAttribute(*line, name);
    node.instance = lines.At(*line).exports;
    return node;
}

SysfsNode SysfsTree::GpioAttribute(unsigned line, std::string_view name) const {
    if (name == "direction") {
        return LineAttribute<&Lines::DirectionText, &Lines::SetDirection>(board_.lines, line);
    }
    if (name == "edge") {
        return LineAttribute<&Lines::EdgeText, &Lines::SetEdge>(board_.lines, line);
    }
    if (name == "value") {
        SysfsNode node = LineAttribute<&Lines::ValueText, &Lines::SetValue>(board_.lines, line);
        node.line = line;
        return node;
    }
    return Missing(true);
}

SysfsNode SysfsTree::Pwm(std::string_view rest) const {
    PwmChip& chip = board_.pwm;
    if (rest.empty()) {
        return Directory(true);
    }
    if (rest == "npwm") {
        return Attribute([] { return std::to_string(PwmChip::kCount) + "\n"; }, {});
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
    if (!proper || !chip.At(channel).exported) {
        return Missing(name.empty());
    }
    SysfsNode node = name.empty() ? Directory() : PwmAttribute(channel, name);
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
    return Missing(true);
}

SysfsNode SysfsTree::Converter(std::string_view rest) const {
    const AnalogFrontEnd& analog = board_.analog;
    if (rest.empty()) {
        return Directory(true);
    }
    if (rest == "in_voltage_scale") {
        return Attribute([&analog] { return analog.scale + "\n"; }, {});
    }
    for (int input = 0; input < AnalogFrontEnd::kInputs; ++input) {
        if (rest == "in_voltage" + std::to_string(input) + "_raw") {
            return Attribute(
                [&analog, input] { return std::to_string(analog.RawCount(input)) + "\n"; }, {});
        }
    }
    return Missing(true);
}

} // namespace sim
