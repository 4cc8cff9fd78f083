#pragma once

#include "simulator/board/Board.h"
#include "simulator/kernel/EventLog.h"
#include "simulator/kernel/Faults.h"
#include "simulator/kernel/Occasions.h"
#include "simulator/time/RunEnd.h"
#include "simulator/time/Timeline.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// What a call of this name costs in board time when I/O is not free: round figures, set so
/// that the instrument's times are those measured on a Linux 6.1 for 32-bit ARM.
Nanoseconds CallCost(std::string_view call);

/// What the kernel of a run works on.
struct Machine {
    Board& board;
    EventLog& events;
    Timeline& timeline;
    Scheduler& scheduler;
    const RunEnd& end;
};

/// The door that every call of the program passes on its way to the board, and what lies behind it.
class Calls : public Machine {
  public:
    using Counts = std::map<std::string, std::uint64_t, std::less<>>;

    /// costs: calls take board time.
    Calls(const std::vector<Fault>& setup, bool costs, const Machine& machine)
        : Machine(machine), faults(setup), costs_(costs) {}

    Faults faults;
    Occasions occasions;
    /// Called when a fault meets a call: the call, its path, and the error or how many bytes move.
    std::function<void(std::string_view call, std::string_view path, const std::string& what)>
        onFault;
    std::optional<std::uint64_t> limit; ///< the run ends before the call after so many
    bool tellEach = false;              ///< in the event log, before what comes of it

    /// Lets a call in: it is counted, takes its time, gives others their chance and meets its
    /// faults. 0 or a negated errno.
    long Admit(std::string_view call, std::string_view path);
    /// 0, or the negated errno that a fault gives the call, which is then told in the event log.
    long Strike(std::string_view call, std::string_view path);
    /// How much of a read or write of so many bytes a fault lets through.
    std::size_t Allowed(std::size_t size) const {
        return cut_ && *cut_ < size ? static_cast<std::size_t>(*cut_) : size;
    }
    /// True when a fault cuts the call under way short.
    bool Cut() const { return cut_.has_value(); }
    /// Lets board time pass for work of this name, where calls take time.
    void Spend(std::string_view call);
    /// Ends the run: it met what the board does not model.
    [[noreturn]] void Unmodelled(const std::string& text) const { end(Ending::Unmodelled, text); }

    const Counts& Made() const { return counts_; }

  private:
    void Count(std::string_view call);

    bool costs_;
    Counts counts_;
    std::uint64_t made_ = 0;
    std::optional<std::uint64_t> cut_; ///< bytes that the read or write under way may move
};

} // namespace sim
