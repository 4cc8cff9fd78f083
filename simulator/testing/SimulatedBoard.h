#pragma once

#include "simulator/run/RunRoot.h"
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
    sim::Line& Line(std::string_view name);
    /// What the outside puts on an input. On the home sensor's line it stays, whatever the pump
    /// does.
    void SetInput(std::string_view name, bool level);
    PwmOutput& Channel(unsigned number) { return simulation_.board.pwm.At(number); }
    CardSlot& Card() { return simulation_.board.card; }
    sim::Board& Model() { return simulation_.board; }
    sim::Kernel& Kernel() { return simulation_.kernel; }
    sim::Scheduler& Scheduler() { return simulation_.scheduler; }
    sim::Timeline& Timeline() { return simulation_.timeline; }
    void InsertCard() { Card().Insert(); }
    void RemoveCard() { Model().PullCard(); }

    Nanoseconds Now() const { return simulation_.board.Now(); }
    /// Lets board time pass.
    void Elapse(Nanoseconds span);

    /// What the code under test wrote to a line ("B7": "direction in"), a channel ("pwm0": "period
    /// 1000000"), "gpio" or "pwmchip0" ("export 39"), or the converter ("spi": bytes in wire order,
    /// "a080"). A write that the kernel refused ends in its errno.
    Texts WritesTo(std::string_view device) const;
    /// All operations since the start or the last Forget, as "operation path data".
    Texts Events() const;
    /// The same with "microseconds thread" before each.
    Texts TimedEvents() const;
    void Forget() { simulation_.events.Clear(); }
    /// How often the code under test made a call ("open", "write", ...), since the start.
    std::uint64_t Calls(std::string_view name) const;

    /// The occurrence-th call of this name on this path fails from now on, once or for ever.
    void Fail(const std::string& call, const std::string& path, int error,
              std::uint64_t occurrence = 1);
    void FailForever(const std::string& call, const std::string& path, int error,
                     std::uint64_t occurrence = 1);
    /// The occurrence-th read or write on this path moves only so many bytes; a poll comes back at
    /// once and tells of an error, of no edge.
    void CutShort(const std::string& call, const std::string& path, std::uint64_t bytes,
                  std::uint64_t occurrence = 1);
    void StopFailing() { simulation_.kernel.calls.faults.Clear(); }

    /// A path of the board is not there any more.
    void TakeAway(const std::string& path) { Kernel().tree.TakeAway(path); }
    /// Reading an attribute gives this text.
    void ReplaceText(const std::string& path, const std::string& text);
    void Restore(const std::string& path) { Kernel().tree.Restore(path); }

    /// Text of a file on the card, by its name; empty when there is none.
    std::string FileOnCard(const std::string& name) const;
    /// Text of a file that lies below the mount point on the root file system, where it never
    /// belongs.
    std::string FileBelowMountPoint(const std::string& name) const;
    /// Puts a file on the card.
    void WriteFileOnCard(const std::string& name, const std::string& text) const;

    /// Folder on this machine that holds the card's files and the mount point; goes with this
    /// object.
    const std::string& Root() const { return root_.Path(); }

  private:
    RunRoot root_{""};
    Simulation simulation_;
};

using Texts = SimulatedBoard::Texts;

} // namespace sim
