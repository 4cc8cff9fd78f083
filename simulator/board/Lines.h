#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

enum class Edge { None, Rising, Falling, Both };

/// One GPIO line as the kernel's sysfs interface and the board's wiring see it.
struct Line {
    bool exported = false;
    bool output = false;
    bool level = false; ///< driven level of an output, level at the pin of an input
    Edge edge = Edge::None;
    bool activeLow = false; ///< value and edge tell the other level
    bool outside = false;   ///< what the outside puts on the pin
    unsigned edges = 1;     ///< watched edges so far, counted from 1
    unsigned exports = 0;   ///< how often it was exported
};

/// What the lines are like at the start, by their names: "B18".
struct LinesSetup {
    std::vector<std::string> exported; ///< left behind by an earlier run
    std::vector<std::string> high;     ///< inputs whose pin is pulled high
};

/// The controller's 128 lines: ports A to D of 32 lines, kernel number port * 32 + bit.
/// Every operation returns 0 or the errno that the kernel's sysfs store gives.
class Lines {
  public:
    static constexpr unsigned kCount = 128;

    explicit Lines(const LinesSetup& setup);

    /// Called after the level at an output's pin may have changed.
    std::function<void()> onOutputChange;

    int ExportLine(std::string_view number);
    int UnexportLine(std::string_view number);
    int SetDirection(unsigned number, std::string_view text);
    int SetEdge(unsigned number, std::string_view text);
    int SetValue(unsigned number, std::string_view text);
    int SetActiveLow(unsigned number, std::string_view text);

    /// Sets the level that the outside puts on a line; an edge that the line watches becomes
    /// pending. An output keeps its own level.
    void SetInput(unsigned number, bool level);
    /// Drives an output through the controller's registers, past the kernel's bookkeeping.
    void Drive(unsigned number, bool level);

    Line& At(unsigned number) { return lines_.at(number); }
    const Line& At(unsigned number) const { return lines_.at(number); }
    /// True when the line is an output that drives the level.
    bool Drives(unsigned number, bool level) const;

    std::string DirectionText(unsigned number) const;
    std::string EdgeText(unsigned number) const;
    std::string ValueText(unsigned number) const;
    std::string ActiveLowText(unsigned number) const;

    /// "B18" for 50.
    static std::string Name(unsigned number);
    /// 50 for "B18"; nothing for a name that no line has.
    static std::optional<unsigned> Number(std::string_view name);

  private:
    void Changed() const;

    std::array<Line, kCount> lines_{};
};

} // namespace sim
