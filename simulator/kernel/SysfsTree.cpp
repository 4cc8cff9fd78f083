#include "simulator/kernel/SysfsTree.h"

#include "simulator/board/BoardPaths.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

namespace sim {
namespace {

SysfsNode Directory(bool link = false) {
    SysfsNode node;
    node.kind = SysfsNode::Kind::Directory;
    node.link = link;
    return node;
}

SysfsNode Missing() {
    return {};
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

SysfsNode Text(std::string text) {
    return Attribute([text = std::move(text)] { return text + "\n"; }, {});
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

int SysfsNode::Error() const {
    return kind == Kind::Missing ? ENOENT : kind == Kind::BelowAttribute ? ENOTDIR : 0;
}

unsigned SysfsNode::Mode(bool followLinks) const {
    if (kind == Kind::Directory) {
        return link && !followLinks ? S_IFLNK | 0777U : S_IFDIR | 0755U;
    }
    return S_IFREG | (show ? 0444U : 0U) | (store ? 0200U : 0U);
}

SysfsNode SysfsTree::Find(std::string_view path) const {
    const bool takenAway = TakenAway(path);
    const bool asDirectory = path.ends_with('/');
    if (asDirectory) {
        path.remove_suffix(1);
    }
    SysfsNode node = takenAway ? Missing() : LookUp(path);
    if (node.kind == SysfsNode::Kind::Attribute && asDirectory) {
        node.kind = SysfsNode::Kind::BelowAttribute;
    }
    if (node.kind == SysfsNode::Kind::Missing) {
        const std::string_view parent = path.substr(0, path.rfind('/'));
        const SysfsNode::Kind above =
            IsBoardPath(parent) ? Find(parent).kind : SysfsNode::Kind::Directory;
        node.parentExists = board_.present && above == SysfsNode::Kind::Directory;
        if (above == SysfsNode::Kind::Attribute) {
            node.kind = SysfsNode::Kind::BelowAttribute;
        }
        return node;
    }
    node.link = node.link && !asDirectory;
    if (changes_.replaced.empty()) {
        return node;
    }
    if (const std::string* text = Replacement(std::string(path))) {
        node.kind = SysfsNode::Kind::Attribute;
        node.show = [text = *text] { return text; };
    }
    return node;
}

std::vector<std::string> SysfsTree::Names(const std::string& directory) const {
    std::vector<std::string> names;
    const auto offer = [&](const std::string& name) {
        const SysfsNode::Kind kind =
            Find(directory + (directory.ends_with('/') ? "" : "/") + name).kind;
        if (kind == SysfsNode::Kind::Directory || kind == SysfsNode::Kind::Attribute) {
            names.push_back(name);
        }
    };
    for (const char* name :
         {"export",   "unexport",  "gpiochip0", "base",        "label",
          "ngpio",    "direction", "value",     "edge",        "active_low",
          "pwmchip0", "npwm",      "period",    "duty_cycle",  "enable",
          "polarity", "capture",   "devices",   "iio:device0", "in_voltage_scale",
          "mmcblk0p1"}) {
        offer(name);
    }
    for (unsigned line = 0; line < Lines::kCount; ++line) {
        offer("pio" + Lines::Name(line));
    }
    for (unsigned channel = 0; channel < PwmChip::kCount; ++channel) {
        offer("pwm" + std::to_string(channel));
    }
    for (int input = 0; input < AnalogFrontEnd::kInputs; ++input) {
        offer("in_voltage" + std::to_string(input) + "_raw");
    }
    return names;
}

bool SysfsTree::TakenAway(std::string_view path) const {
    return std::any_of(changes_.missing.begin(), changes_.missing.end(),
                       [&](const std::string& folder) { return Below(path, folder).has_value(); });
}

SysfsNode SysfsTree::LookUp(std::string_view path) const {
    if (!board_.present) {
        return Missing();
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
        return Card(*rest);
    }
    const bool above = path == kPwm || path == kAnalog || path == "/sys/bus/iio/devices";
    return above ? Directory() : Missing();
}

SysfsNode SysfsTree::Card(std::string_view rest) const {
    const CardSlot& card = board_.card;
    if (!card.Listed(board_.Now())) {
        return Missing();
    }
    if (rest.empty()) {
        return Directory(true);
    }
    return rest == "mmcblk0p1" && card.partitioned ? Directory() : Missing();
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
    if (folder == "gpiochip0") {
        return GpioChip(name);
    }
    const auto line =
        folder.substr(0, 3) == "pio" ? Lines::Number(folder.substr(3)) : std::optional<unsigned>{};
    if (!line || !lines.At(*line).exported) {
        return Missing();
    }
    SysfsNode node = name.empty() ? Directory(true) : GpioAttribute(*line, name);
    node.instance = lines.At(*line).exports;
    return node;
}

SysfsNode SysfsTree::GpioChip(std::string_view name) {
    if (name.empty()) {
        return Directory(true);
    }
    if (name == "base") {
        return Text("0");
    }
    if (name == "ngpio") {
        return Text(std::to_string(Lines::kCount));
    }
    return name == "label" ? Text("pio") : Missing();
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
    return Missing();
}

SysfsNode SysfsTree::Pwm(std::string_view rest) const {
    PwmChip& chip = board_.pwm;
    if (rest.empty()) {
        return Directory(true);
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
    if (!proper || !chip.At(channel).exported) {
        return Missing();
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
    return Missing();
}

SysfsNode SysfsTree::Converter(std::string_view rest) const {
    const AnalogFrontEnd& analog = board_.analog;
    if (rest.empty()) {
        return Directory(true);
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
    return Missing();
}

} // namespace sim
