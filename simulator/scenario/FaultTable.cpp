#include "simulator/scenario/FaultTable.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/scenario/ErrnoNames.h"

#include <algorithm>
#include <array>

namespace sim {
namespace {

/// Which paths a call is made on: a fault on any other would never strike.
enum class Paths { none, board, any };

struct FaultCall {
    std::string_view name;
    Paths paths;
};

constexpr std::array faultCalls{
    FaultCall{"access", Paths::board},
    FaultCall{"clock_gettime", Paths::none},
    FaultCall{"close", Paths::board},
    FaultCall{"fork", Paths::none},
    FaultCall{"ioctl", Paths::board},
    FaultCall{"kill", Paths::none},
    FaultCall{"lseek", Paths::board},
    FaultCall{"lstat", Paths::board},
    FaultCall{"mkdir", Paths::board},
    FaultCall{"mmap", Paths::board},
    FaultCall{"mount", Paths::board},
    FaultCall{"nanosleep", Paths::none},
    FaultCall{"open", Paths::board},
    FaultCall{"poll", Paths::board},
    FaultCall{"pthread_create", Paths::none},
    FaultCall{"pthread_join", Paths::none},
    FaultCall{"pthread_mutex_init", Paths::none},
    FaultCall{"pthread_mutex_lock", Paths::none},
    FaultCall{"pthread_mutex_unlock", Paths::none},
    FaultCall{"read", Paths::board},
    FaultCall{"setmntent", Paths::board},
    FaultCall{"stat", Paths::board},
    FaultCall{"statfs", Paths::any},
    FaultCall{"system", Paths::none},
    FaultCall{"umount", Paths::board},
    FaultCall{"write", Paths::board},
};

const FaultCall* find(std::string_view call) {
    const auto* found = std::find_if(faultCalls.begin(), faultCalls.end(),
                                     [&](const FaultCall& known) { return known.name == call; });
    return found != faultCalls.end() ? found : nullptr;
}

void readCall(TomlTable& table, Fault& fault) {
    table.require("call");
    table.read("call", fault.call);
    table.read("path", fault.path);
    const FaultCall* call = find(fault.call);
    if (call == nullptr) {
        table.fail("call", "unknown call; known: " + faultCallNames());
    } else if (call->paths == Paths::none && !fault.path.empty()) {
        table.fail("path", "the call " + fault.call + " has no path");
    } else if (call->paths == Paths::board && !fault.path.empty()) {
        const bool open = fault.path.back() == '*';
        const bool known = open ? beginsBoardPath(fault.path.substr(0, fault.path.size() - 1))
                                : isBoardPath(fault.path);
        if (!known || !isPlainPath(fault.path)) {
            table.fail("path", "no path of the board; takes one such as \"/sys/class/gpio/export\" "
                               "or, for all that begin so, \"/sys/class/gpio/*\"");
        }
    }
}

void readFailure(TomlTable& table, Fault& fault) {
    std::string error;
    table.read("errno", error);
    if (table.has("bytes")) {
        std::int64_t bytes = 0;
        table.readInteger("bytes", bytes, 0, 1'000'000);
        fault.bytes = static_cast<std::uint64_t>(bytes);
        if (fault.call != "read" && fault.call != "write") {
            table.fail("bytes", "goes with the calls read and write only");
        }
    }
    if (table.has("errno") == table.has("bytes")) {
        table.fail("errno", "a fault has either an errno or bytes");
    } else if (table.has("errno") && !errnoNumber(error)) {
        table.fail("errno", "unknown name \"" + error + "\"; takes one such as \"EACCES\"");
    }
    fault.error = errnoNumber(error).value_or(0);
}

} // namespace

void readFault(TomlTable& table, Scenario& scenario) {
    Fault fault;
    readCall(table, fault);
    table.readInteger("occurrence", fault.occurrence, 1, 1'000'000'000);
    readFailure(table, fault);
    std::string repeat = "once";
    table.read("repeat", repeat);
    if (repeat != "once" && repeat != "forever") {
        table.fail("repeat", "takes \"once\" or \"forever\"");
    }
    fault.forever = repeat == "forever";
    scenario.faults.push_back(fault);
}

std::string faultCallNames() {
    std::string names;
    for (const FaultCall& call : faultCalls) {
        names += (names.empty() ? "" : ", ") + std::string(call.name);
    }
    return names;
}

} // namespace sim
