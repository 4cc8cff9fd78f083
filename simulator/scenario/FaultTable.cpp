#include "simulator/scenario/FaultTable.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"

#include <algorithm>
#include <array>

namespace sim {
namespace {

using namespace std::string_view_literals;

constexpr std::array kCalls{"access"sv,
                            "clock_gettime"sv,
                            "close"sv,
                            "fork"sv,
                            "ioctl"sv,
                            "kill"sv,
                            "lseek"sv,
                            "lstat"sv,
                            "mkdir"sv,
                            "mmap"sv,
                            "mount"sv,
                            "nanosleep"sv,
                            "open"sv,
                            "poll"sv,
                            "pthread_create"sv,
                            "pthread_join"sv,
                            "pthread_mutex_init"sv,
                            "pthread_mutex_lock"sv,
                            "pthread_mutex_unlock"sv,
                            "read"sv,
                            "setmntent"sv,
                            "stat"sv,
                            "statfs"sv,
                            "system"sv,
                            "umount"sv,
                            "write"sv};
/// A fault on a path would never strike these.
constexpr std::array kWithoutPath{"clock_gettime"sv,
                                  "fork"sv,
                                  "kill"sv,
                                  "nanosleep"sv,
                                  "pthread_create"sv,
                                  "pthread_join"sv,
                                  "pthread_mutex_init"sv,
                                  "pthread_mutex_lock"sv,
                                  "pthread_mutex_unlock"sv,
                                  "system"sv};
/// Asked of any path, not of the board's alone.
constexpr std::string_view kOnAnyPath = "statfs";

bool IsOneOf(const auto& calls, std::string_view call) {
    return std::find(calls.begin(), calls.end(), call) != calls.end();
}

void ReadCall(TomlTable& table, Fault& fault) {
    table.Require("call");
    table.Read("call", fault.call);
    table.Read("path", fault.path);
    if (!IsOneOf(kCalls, fault.call)) {
        table.Fail("call", "unknown call; known: " + FaultCallNames());
    } else if (IsOneOf(kWithoutPath, fault.call) && !fault.path.empty()) {
        table.Fail("path", "the call " + fault.call + " has no path");
    } else if (fault.call != kOnAnyPath && !fault.path.empty()) {
        const bool open = fault.path.back() == '*';
        const bool known = open ? BeginsDevicePath(fault.path.substr(0, fault.path.size() - 1))
                                : IsDevicePath(fault.path);
        if (!known || !IsPlainPath(fault.path)) {
            table.Fail("path", "no path of the board; takes one such as \"/sys/class/gpio/export\" "
                               "or, for all that begin so, \"/sys/class/gpio/*\"");
        }
    }
}

void ReadFailure(TomlTable& table, Fault& fault) {
    std::string error;
    table.Read("errno", error);
    if (table.Has("bytes")) {
        std::int64_t bytes = 0;
        table.ReadInteger("bytes", bytes, 0, 1'000'000);
        fault.bytes = static_cast<std::uint64_t>(bytes);
        if (fault.call != "read" && fault.call != "write") {
            table.Fail("bytes", "goes with the calls read and write only");
        }
    }
    if (table.Has("errno") == table.Has("bytes")) {
        table.Fail("errno", "a fault has either an errno or bytes");
    } else if (table.Has("errno") && !ErrnoNumber(error)) {
        table.Fail("errno", "unknown name \"" + error + R"("; takes one such as "EACCES")");
    }
    fault.error = ErrnoNumber(error).value_or(0);
}

} // namespace

void ReadMoment(TomlTable& table, Nanoseconds& at, Occasion& occasion) {
    constexpr std::int64_t most = 1'000'000'000;
    table.ReadSeconds("at", at, 0.0, kLongestRun);
    table.ReadInteger("at_step", occasion.step, 1, most);
    table.ReadInteger("at_measurement", occasion.measurement, 1, most);
}

void ReadCallOfEvent(TomlTable& table, Occasion& occasion) {
    Fault fault;
    ReadCall(table, fault);
    occasion.call = fault.call;
    occasion.path = fault.path;
    table.ReadInteger("occurrence", occasion.occurrence, 1, 1'000'000'000);
}

void ReadFault(TomlTable& table, std::vector<Fault>& faults) {
    Fault fault;
    ReadCall(table, fault);
    ReadMoment(table, fault.at, fault.since);
    if (table.Has("at") + table.Has("at_step") + table.Has("at_measurement") > 1) {
        table.Fail("at", "a fault has one of at, at_step and at_measurement");
    }
    fault.at = fault.since.Set() ? kNever : fault.at;
    table.ReadSeconds("until", fault.until, 0.0, kLongestRun);
    table.ReadInteger("occurrence", fault.occurrence, 1, 1'000'000'000);
    ReadFailure(table, fault);
    std::string repeat = "once";
    table.Read("repeat", repeat);
    if (repeat != "once" && repeat != "forever") {
        table.Fail("repeat", R"(takes "once" or "forever")");
    }
    table.Read("probability", fault.probability, 0.0, 1.0);
    fault.forever = repeat == "forever";
    faults.push_back(fault);
}

std::string FaultCallNames() {
    std::string names;
    for (const std::string_view call : kCalls) {
        names += (names.empty() ? "" : ", ") + std::string(call);
    }
    return names;
}

} // namespace sim
