#pragma once

#include "log/Entry.h"

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace tavrelin::daylog {

/// Makes entries of the bytes of one day's file, whatever they are. The instrument's two writers
/// hand their text over in pieces: a record that stands in the middle of another one is found, and
/// the two halves are put together again.
class LineParser {
  public:
    /// Longer lines are none of the instrument's, which writes at most 240 messages of 29
    /// characters and a record into one: their begin is told as unknown.
    static constexpr std::size_t kLongestLine = 8192;

    explicit LineParser(std::function<void(const Entry&)> take) : take_(std::move(take)) {}

    /// Reads on; a line may go on in the next piece.
    void Feed(std::string_view bytes);
    /// The file has no more: what came after its last newline is a torn line.
    void Finish();

  private:
    void ReadPart(std::string_view part);
    void ReadLine(std::string_view line);
    void ReadBrokenLine(std::string_view line);
    bool ParseRecord(std::string_view line, Entry& entry);
    bool ParseTime(std::string_view& text, Entry& entry);
    bool ParseSample(std::string_view text, Entry& entry);
    void Tell(Entry::Kind kind, std::string_view text);
    void TellRecovered(Entry& entry);

    std::function<void(const Entry&)> take_;
    std::uint64_t line_ = 0;
    std::string rest_;            ///< begin of a line that goes on in the next piece
    std::string head_;            ///< begin of a record that another one cut in two
    std::array<char, 10> date_{}; ///< of the last record
    CivilSeconds day_ = 0;
    std::string secondText_; ///< time of the last sample, with its comma
    CivilSeconds second_ = 0;
    std::string tail_; ///< what follows the reading of the last sample
};

} // namespace tavrelin::daylog
