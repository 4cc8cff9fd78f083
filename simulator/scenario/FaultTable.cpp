#include "simulator/scenario/FaultTable.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/kernel/ErrnoNames.h"

#include <algorithm>
#include <array>

namespace sim {
namespace {

/// Which paths a call is made on: a fault on any other would never strike.
enum class Paths { None, Board, Any };

struct FaultCall {
    std::string_view name;
    Paths paths;
};

constexpr std::array kFaultCalls{
    FaultCall{"access", Paths::Board},
    FaultCall{"clock_gettime", Paths::None},
    FaultCall{"close", Paths::Board},
    FaultCall{"fork", Paths::None},
    FaultCall{"ioctl", Paths::Board},
    FaultCall{"kill", Paths::None},
    FaultCall{"lseek", Paths::Board},
    FaultCall{"lstat", Paths::Board},
    FaultCall{"mkdir", Paths::Board},
    FaultCall{"mmap", Paths::Board},
    FaultCall{"mount", Paths::Board},
    FaultCall{"nanosleep", Paths::None},
    FaultCall{"open", Paths::Board},
    FaultCall{"poll", Paths::Board},
    FaultCall{"pthread_create", Paths::None},
    FaultCall{"pthread_join", Paths::None},
    FaultCall{"pthread_mutex_init", Paths::None},
    FaultCall{"pthread_mutex_lock", Paths::None},
    FaultCall{"pthread_mutex_unlock", Paths::None},
    FaultCall{"read", Paths::Board},
    FaultCall{"setmntent", Paths::Board},
    FaultCall{"stat", Paths::Board},
    FaultCall{"statfs", Paths::Any},
    FaultCall{"system", Paths::None},
    FaultCall{"umount", Paths::Board},
    FaultCall{"write", Paths::Board},
};

const FaultCall* Find(std::string_view call) {
    const auto* found = std::find_if(kFaultCalls.begin(), kFaultCalls.end(),
                                     [&](const FaultCall& known) { return known.name == call; });
    return found != kFaultCalls.end() ? found : nullptr;
}

void ReadCall(TomlTable& table, Fault& fault) {
    table.Require("call");
    table.Read("call", fault.call);
    table.Read("path", fault.path);
    const FaultCall* call = Find(fault.call);
    if (call == nullptr) {
        table.Fail("call", "unknown call; known: " + FaultCallNames());
    } else if (call->paths == Paths::None && !fault.path.empty()) {
        table.Fail("path", "the call " + fault.call + " has no path");
    } else if (call->paths == Paths::Board && !fault.path.empty()) {
        const bool open = fault.path.back() == '*';
        const bool known = open ? BeginsBoardPath(fault.path.substr(0, fault.path.size() - 1))
                                : IsBoardPath(fault.path);
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
        table.Fail("errno", "unknown name \"" + error + "\"; takes one such as \"EACCES\"");
    }
    fault.error = ErrnoNumber(error).value_or(0);
}

} // namespace

void ReadFault(TomlTable& table, std::vector<Fault>& faults) {
    Fault fault;
    ReadCall(table, fault);
    table.ReadInteger("occurrence", fault.occurrence, 1, 1'000'000'000);
    ReadFailure(table, fault);
    std::string repeat = "once";
    table.Read("repeat", repeat);
    if (repeat != "once" && repeat != "forever") {
        table.Fail("repeat", "takes \"once\" or \"forever\"");
    }
    fault.forever = repeat == "forever";
    faults.push_back(fault);
}

std::string FaultCallNames() {
    std::string names;
    for (const FaultCall& call : kFaultCalls) {
        names += (names.empty() ? "" : ", ") + std::string(call.name);
    }
    return names;
}

} // namespace sim
