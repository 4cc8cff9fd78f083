#pragma once

#include "simulator/board/Board.h"
#include "simulator/run/ConsoleWatch.h"
#include "simulator/run/ValueChanges.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace sim {

/// Writes a run down as value changes: what the board does and what the program shows.
class Waveform {
  public:
    /// Turns of the pump's shaft are written at this interval, and where something changes.
    static constexpr Nanoseconds kShaftInterval = Milliseconds(5);

    /// Listens to a board that outlives this object.
    Waveform(Board& board, const ConsoleWatch& console);
    Waveform(const Waveform&) = delete;
    Waveform& operator=(const Waveform&) = delete;
    ~Waveform() { Finish(); }

    /// Begins a file, replacing it, as EventLog::WriteTo does.
    bool WriteTo(const std::string& path, FileBuffer& buffer);
    /// What the program has shown on the console.
    void Show(std::string_view text);
    /// A fault of the scenario met a call.
    void ShowFault(std::string_view call, std::string_view path, const std::string& what);
    /// Writes nothing more: the file is another process's.
    void Abandon() { file_.Abandon(); }
    /// Hands everything to the file, up to this moment.
    void Finish();

  private:
    void NoteOutputs();
    void NoteShaft(Nanoseconds now);
    void NoteWorld();
    void Pass(Nanoseconds until);
    void ShowLine();
    void Set(std::size_t variable, double value) {
        if (values_[variable] != value) {
            Change(variable, value, board_.Now());
        }
    }
    void SetLevel(std::size_t variable, bool high) { Set(variable, high ? 1.0 : 0.0); }
    void Change(std::size_t variable, double value, Nanoseconds moment);
    void Stamp() { Stamp(board_.Now()); }
    void Stamp(Nanoseconds moment);

    Board& board_;
    const ConsoleWatch& console_;
    ValueChanges file_;
    std::array<double, ValueChanges::Count> values_{};
    std::int64_t faultEnds_ =
        -1; ///< in microseconds: when the fault's pulse ends; negative: there is none
    std::string stepName_;
    std::string line_;  ///< of the console, under way
    std::string shown_; ///< the lines of this very moment
    Nanoseconds shownAt_ = -1;
};

} // namespace sim
