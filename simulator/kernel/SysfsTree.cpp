#include "simulator/kernel/SysfsTree.h"

#include <algorithm>

namespace sim {
namespace {

constexpr std::string_view gpioRoot = "/sys/class/gpio";
constexpr std::string_view pwmRoot = "/sys/class/pwm/pwmchip0";
constexpr std::string_view converterRoot = "/sys/bus/iio/devices/iio:device0";
constexpr std::string_view cardRoot = "/sys/block/mmcblk0";

SysfsNode directory(bool link = false) {
    SysfsNode node;
    node.kind = SysfsNode::Kind::directory;
    node.link = link;
    return node;
}

SysfsNode missing(bool parentExists) {
    SysfsNode node;
    node.parentExists = parentExists;
    return node;
}

SysfsNode attribute(std::function<std::string()> show, std::function<int(std::string_view)> store) {
    SysfsNode node;
    node.kind = SysfsNode::Kind::attribute;
    node.show = std::move(show);
    node.store = std::move(store);
    return node;
}

/// What follows a folder's name in a path: empty for the folder itself, nothing for a path
/// elsewhere.
std::optional<std::string_view> below(std::string_view path, std::string_view root) {
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

std::pair<std::string_view, std::string_view> splitAtSlash(std::string_view path) {
    const std::size_t slash = path.find('/');
    if (slash == std::string_view::npos) {
        return {path, {}};
    }
    return {path.substr(0, slash), path.substr(slash + 1)};
}

} // namespace

SysfsNode SysfsTree::find(std::string_view path) const {
    SysfsNode node = lookUp(path);
    if (taken(path)) {
        const bool parentTaken = taken(path.substr(0, path.rfind('/')));
        return missing(!parentTaken &&
                       (node.parentExists || node.kind != SysfsNode::Kind::missing));
    }
    if (replaced_.empty()) {
        return node;
    }
    if (const auto found = replaced_.find(std::string(path)); found != replaced_.end()) {
        node.kind = SysfsNode::Kind::attribute;
        node.show = [text = found->second] { return text; };
    }
    return node;
}

bool SysfsTree::taken(std::string_view path) const {
    return std::any_of(missing_.begin(), missing_.end(),
                       [&](const std::string& folder) { return below(path, folder).has_value(); });
}

SysfsNode SysfsTree::lookUp(std::string_view path) const {
    if (!present_) {
        return missing(false);
    }
    if (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    if (const auto rest = below(path, gpioRoot)) {
        return gpio(*rest);
    }
    if (const auto rest = below(path, pwmRoot)) {
        return pwm(*rest);
    }
    if (const auto rest = below(path, converterRoot)) {
        return converter(*rest);
    }
    if (const auto rest = below(path, cardRoot)) {
        if (!board_.card.listed(board_.now())) {
            return missing(rest->empty());
        }
        return rest->empty() ? directory(true) : missing(true);
    }
    return missing(false);
}

SysfsNode SysfsTree::gpio(std::string_view rest) const {
    if (rest.empty()) {
        return directory();
    }
    if (rest == "export") {
        return attribute({},
                         [this](std::string_view text) { return board_.lines.exportLine(text); });
    }
    if (rest == "unexport") {
        return attribute({},
                         [this](std::string_view text) { return board_.lines.unexportLine(text); });
    }
    const auto [folder, name] = splitAtSlash(rest);
    const auto line =
        folder.substr(0, 3) == "pio" ? Lines::number(folder.substr(3)) : std::optional<unsigned>{};
    if (!line || !board_.lines.at(*line).exported) {
        return missing(name.empty());
    }
    SysfsNode node = name.empty() ? directory(true) : gpioAttribute(*line, name);
    node.instance = board_.lines.at(*line).exports;
    return node;
}

SysfsNode SysfsTree::gpioAttribute(unsigned line, std::string_view name) const {
    Lines& lines = board_.lines;
    if (name == "direction") {
        return attribute(
            [&lines, line] { return lines.directionText(line); },
            [&lines, line](std::string_view text) { return lines.setDirection(line, text); });
    }
    if (name == "edge") {
        return attribute(
            [&lines, line] { return lines.edgeText(line); },
            [&lines, line](std::string_view text) { return lines.setEdge(line, text); });
    }
    if (name == "value") {
        SysfsNode node =
            attribute([&lines, line] { return lines.valueText(line); },
                      [&lines, line](std::string_view text) { return lines.setValue(line, text); });
        node.line = line;
        return node;
    }
    return missing(true);
}

SysfsNode SysfsTree::pwm(std::string_view rest) const {
    if (rest.empty()) {
        return directory(true);
    }
    if (rest == "npwm") {
        return attribute([] { return std::to_string(PwmChip::count) + "\n"; }, {});
    }
    if (rest == "export") {
        return attribute({},
                         [this](std::string_view text) { return board_.pwm.exportChannel(text); });
    }
    if (rest == "unexport") {
        return attribute(
            {}, [this](std::string_view text) { return board_.pwm.unexportChannel(text); });
    }
    const auto [folder, name] = splitAtSlash(rest);
    const bool proper = folder.size() == 4 && folder.substr(0, 3) == "pwm" && folder[3] >= '0' &&
                        folder[3] < static_cast<char>('0' + PwmChip::count);
    const unsigned channel = proper ? static_cast<unsigned>(folder[3] - '0') : 0;
    if (!proper || !board_.pwm.at(channel).exported) {
        return missing(name.empty());
    }
    SysfsNode node = name.empty() ? directory() : pwmAttribute(channel, name);
    node.instance = board_.pwm.at(channel).exports;
    return node;
}

SysfsNode SysfsTree::pwmAttribute(unsigned channel, std::string_view name) const {
    PwmChip& chip = board_.pwm;
    if (name == "period") {
        return attribute(
            [&chip, channel] { return std::to_string(chip.at(channel).period) + "\n"; },
            [&chip, channel](std::string_view text) { return chip.setPeriod(channel, text); });
    }
    if (name == "duty_cycle") {
        return attribute(
            [&chip, channel] { return std::to_string(chip.at(channel).duty) + "\n"; },
            [&chip, channel](std::string_view text) { return chip.setDuty(channel, text); });
    }
    if (name == "enable") {
        return attribute(
            [&chip, channel] { return std::string(chip.at(channel).enabled ? "1\n" : "0\n"); },
            [&chip, channel](std::string_view text) { return chip.setEnable(channel, text); });
    }
    return missing(true);
}

SysfsNode SysfsTree::converter(std::string_view rest) const {
    const AnalogFrontEnd& analog = board_.analog;
    if (rest.empty()) {
        return directory(true);
    }
    if (rest == "in_voltage_scale") {
        return attribute([&analog] { return analog.scale + "\n"; }, {});
    }
    for (int input = 0; input < AnalogFrontEnd::inputs; ++input) {
        if (rest == "in_voltage" + std::to_string(input) + "_raw") {
            return attribute(
                [&analog, input] { return std::to_string(analog.rawCount(input)) + "\n"; }, {});
        }
    }
    return missing(true);
}

} // namespace sim
