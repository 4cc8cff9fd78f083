#pragma once

#include "simulator/run/Simulation.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// A simulated board under the calling thread of a test, with free I/O: from its construction to
/// its destruction all calls of the code under test meet it, and board time stands still unless
/// somebody waits.
///
///     SimulatedBoard board;
///     GpioPin pin(1, 7);
///     EXPECT_TRUE(board.line("B7").exported);
///     EXPECT_EQ(board.writesTo("B7"), (Texts{"direction in", "edge none"}));
class SimulatedBoard {
  public:
    using Texts = std::vector<std::string>;

    SimulatedBoard() : SimulatedBoard(Scenario{}) {}
    explicit SimulatedBoard(const Scenario& scenario, const RunOptions& options = {});
    SimulatedBoard(const SimulatedBoard&) = delete;
    SimulatedBoard& operator=(const SimulatedBoard&) = delete;
    ~SimulatedBoard();

    /// A line by its name: port letter and bit.
    Line& line(std::string_view name);
    /// What the outside puts on an input. On the home sensor's line it stays, whatever the pump
    /// does.
    void setInput(std::string_view name, bool level);
    PwmOutput& channel(unsigned number) { return simulation_.board.pwm.at(number); }
    CardSlot& card() { return simulation_.board.card; }
    Board& board() { return simulation_.board; }
    Kernel& kernel() { return simulation_.kernel; }
    void insertCard() { card().insert(now()); }
    void removeCard() { card().remove(now()); }

    Nanoseconds now() const { return simulation_.board.now(); }
    /// Lets board time pass.
    void elapse(Nanoseconds span);

    /// What the code under test wrote to a line ("B7": "direction in"), a channel ("pwm0": "period
    /// 1000000"), "gpio" or "pwmchip0" ("export 39"), or the converter ("spi": bytes in wire order,
    /// "a080"). A write that the kernel refused ends in its errno.
    Texts writesTo(std::string_view device) const;
    /// All operations since the start or the last forget, as "operation path data".
    Texts events() const;
    /// The same with "microseconds thread" before each.
    Texts timedEvents() const;
    void forget() { simulation_.events.clear(); }
    /// How often the code under test made a call ("open", "write", ...), since the start.
    std::uint64_t calls(std::string_view name) const;

    /// The occurrence-th call of this name on this path fails from now on, once or for ever.
    void fail(const std::string& call, const std::string& path, int error,
              std::uint64_t occurrence = 1);
    void failForever(const std::string& call, const std::string& path, int error,
                     std::uint64_t occurrence = 1);
    /// The occurrence-th read or write on this path moves only so many bytes; a poll comes back at
    /// once and tells of an error, of no edge.
    void cutShort(const std::string& call, const std::string& path, std::uint64_t bytes,
                  std::uint64_t occurrence = 1);
    void stopFailing() { simulation_.faults.clear(); }

    /// A path of the board is not there any more.
    void takeAway(const std::string& path) { kernel().sysfs().take(path); }
    /// Reading an attribute gives this text.
    void replaceText(const std::string& path, const std::string& text);
    void restore(const std::string& path) { kernel().sysfs().giveBack(path); }

    /// Text of a file on the card, by its name; empty when there is none.
    std::string fileOnCard(const std::string& name) const;
    /// Text of a file that lies below the mount point on the root file system, where it never
    /// belongs.
    std::string fileBelowMountPoint(const std::string& name) const;
    /// Puts a file on the card.
    void writeFileOnCard(const std::string& name, const std::string& text) const;

    /// Folder on this machine that holds the card's files and the mount point; goes with this
    /// object.
    const std::string& root() const { return root_; }

  private:
    std::string root_;
    Simulation simulation_;
};

using Texts = SimulatedBoard::Texts;

} // namespace sim
