// What a run has left behind that ended without giving it back: switched off, then given back.

#include "base/Console.h"
#include "devices/RunWiring.h"
#include "platform/AttributeFile.h"
#include "platform/SysfsNames.h"
#include "platform/SysfsResource.h"
#include "service/Commands.h"

#include <iostream>

namespace tavrelin::service {

namespace {

enum class Drives { Actuator, DriverChip, Nothing };

struct Item {
    std::string name;
    Drives drives;
    SysfsResource resource;
    bool wasExported = resource.IsExported();
    bool held = false; // to be given back
};

std::vector<Item> ItemsOfARun() {
    std::vector<Item> items;
    items.reserve(wiring::kRunChannels.size() + wiring::kRunLines.size());
    for (const auto& [channel, actuator] : wiring::kRunChannels) {
        items.push_back({"PWM " + std::to_string(channel) + ", " + actuator, Drives::Actuator,
                         SysfsResource::Channel(channel)});
    }
    for (const auto& [line, purpose, enablesChip] : wiring::kRunLines) {
        items.push_back({LineName(line.bank, line.bit) + ", " + purpose,
                         enablesChip ? Drives::DriverChip : Drives::Nothing,
                         SysfsResource::Line(line.bank, line.bit)});
    }
    return items;
}

bool IsActive(const Item& item) {
    switch (item.drives) {
    case Drives::Actuator:
        return item.resource.Read("enable") != "0";
    case Drives::DriverChip:
        // An input leaves the chip to the level that it had before any program ran.
        return item.resource.Read("direction") != "in" && item.resource.Read("value") != "1";
    case Drives::Nothing:
        break;
    }
    return false;
}

// Asked for only where something is active: a channel that was never programmed refuses it.
void Deactivate(const Item& item) {
    if (item.drives == Drives::Actuator) {
        item.resource.Write("enable", "0");
    } else {
        item.resource.Write("direction", "high"); // and never low, as "out" would be at first
    }
}

// Says what is done and what is not.
class Protocol {
  public:
    void Done(const std::string& what) {
        PrintLineAndFlush(what);
        idle_ = false;
    }
    void Failed(const std::string& what) {
        std::cerr << "tavrelin-service safe-state: " + what + "\n";
        failed_ = true;
    }
    [[nodiscard]] bool HasFailed() const { return failed_; }
    [[nodiscard]] bool IsEmpty() const { return idle_ && !failed_; }

  private:
    bool idle_ = true;
    bool failed_ = false;
};

// What is exported by nobody may be active all the same: the kernel keeps it as it was.
void MakeSafe(Item& item, Protocol& protocol) {
    if (!item.wasExported && item.drives == Drives::Nothing) {
        return;
    }
    if (!item.wasExported && !item.resource.Export()) {
        protocol.Failed(item.name + ": cannot be exported, so nobody knows whether it is on");
        return;
    }
    item.held = true;
    if (!IsActive(item)) {
        return;
    }
    Deactivate(item);
    if (IsActive(item)) {
        item.held = false;
        protocol.Failed(item.name + ": still on, and left exported");
    } else {
        protocol.Done(item.name +
                      (item.drives == Drives::Actuator ? ": switched off" : ": disabled"));
    }
}

void GiveBack(const Item& item, Protocol& protocol) {
    if (!item.held) {
        return;
    }
    if (!item.resource.Unexport()) {
        protocol.Failed(item.name + ": still exported");
    } else if (item.wasExported) {
        protocol.Done(item.name + ": given back");
    }
}

// Leaves out what the board has no place for, and says so in one line. What is exported is there,
// whatever becomes of the question; each is asked for by itself, so that none is left out unsaid.
void LeaveOutMissing(std::vector<Item>& items, Protocol& protocol) {
    std::string missing;
    std::erase_if(items, [&missing](const Item& item) {
        if (item.wasExported || item.resource.CanBeExported()) {
            return false;
        }
        const std::string place = "no " + item.resource.Parent();
        if (missing.find(place) == std::string::npos) {
            missing += (missing.empty() ? "" : " and ") + place;
        }
        return true;
    });
    if (!missing.empty()) {
        protocol.Failed(missing + " here; see tavrelin-service board-check");
    }
}

} // namespace

int SafeStateCommand(const Arguments& arguments) {
    if (const auto status = UnlessEmpty("safe-state", arguments)) {
        return *status;
    }
    Protocol protocol;
    std::vector<Item> items = ItemsOfARun();
    LeaveOutMissing(items, protocol);
    // Off first, all of them: given back before, one would go on without anybody to stop it.
    for (Item& item : items) {
        MakeSafe(item, protocol);
    }
    for (const Item& item : items) {
        GiveBack(item, protocol);
    }
    if (protocol.IsEmpty()) {
        PrintLineAndFlush("Nothing to do: nothing of the instrument is on or exported.");
    }
    return StatusOf(!protocol.HasFailed());
}

} // namespace tavrelin::service
