#pragma once

#include "simulator/board/Nanoseconds.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <vector>

namespace sim {

/// The optical converter as its SPI pins see it: bytes in the order in which they pass the wire.
/// A two-byte command, most significant byte first, starts a conversion; four bytes read after the
/// conversion time are the result word: bit 29 is set for a reading of 0 or more, bits 28 to 5 hold
/// its low 24 bits. Read too early, the converter gives the command back: no new result.
class Converter {
  public:
    static constexpr Nanoseconds kConversionTime = Milliseconds(150);
    static constexpr std::int32_t kLargestReading = (1 << 24) - 1;

    /// Gives the detector's reading in counts at a moment; set by the board.
    std::function<std::int32_t(Nanoseconds now)> detector;
    /// Called with each command that comes in, and each word that begins to go out.
    std::function<void(std::uint32_t command)> onCommand;
    std::function<void(std::uint32_t word)> onWord;

    /// Result words to answer with instead of measured ones, one per read, in order.
    void AnswerWith(const std::vector<std::uint32_t>& words) {
        words_ = {words.begin(), words.end()};
    }

    void Receive(Nanoseconds now, std::span<const std::uint8_t> wire);
    void Send(Nanoseconds now, std::span<std::uint8_t> wire);

    /// The reading that a result word stands for.
    static std::int32_t Reading(std::uint32_t word);
    /// The result word that stands for a reading; readings beyond 24 bits are held at the end of
    /// the range.
    static std::uint32_t ResultWord(std::int32_t reading);

  private:
    std::uint32_t NextWord(Nanoseconds now);

    std::deque<std::uint32_t> words_;
    std::uint32_t command_ = 0;
    Nanoseconds startedAt_ = kNever;
    std::vector<std::uint8_t> shift_; ///< bytes still to send of the word being read
    std::size_t shifted_ = 0;
};

} // namespace sim
