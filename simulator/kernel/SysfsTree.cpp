#include "simulator/kernel/SysfsTree.h"

#include "simulator/board/BoardPaths.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

namespace sim {
namespace {

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

} // namespace

SysfsNode SysfsNode::Directory(bool link) {
    SysfsNode node;
    node.kind = Kind::Directory;
    node.link = link;
    return node;
}

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
    SysfsNode node = takenAway ? SysfsNode() : LookUp(path);
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
          "mmcblk0",  "mmcblk0p1", "gpio",      "pwm",         "iio",
          "uevent",   "subsystem", "device",    "power",       "dev",
          "ro",       "removable", "partition"}) {
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
    if (path == kClasses || path == kBuses || path == kBlocks) {
        return SysfsNode::Directory();
    }
    if (!board_.present) {
        return {};
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
    return above ? SysfsNode::Directory() : SysfsNode();
}

} // namespace sim
