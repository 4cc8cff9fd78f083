#pragma once

#include "tests/cycle/Instrument.h"

#include <cerrno>
#include <cstdint>
#include <vector>

namespace tavrelin {

/// A search whose sensor line the test holds: off the flag, until the test puts the flag there.
class SensorHeld : public testing::Test {
  protected:
    explicit SensorHeld(const sim::RunOptions& options = {}) : instrument({}, options) {
        board.SetInput("B18", true);
    }

    /// The flag is in the sensor at these readings of it, counted from 1 through both phases, the
    /// debouncing and the final check: a level that cannot be opened reads as low.
    void FlagAtReadings(const std::vector<std::uint64_t>& ordinals) {
        for (const std::uint64_t ordinal : ordinals) {
            board.Fail("open", "/sys/class/gpio/pioB18/value", EACCES, ordinal);
        }
    }
    void FlagAt(sim::Nanoseconds moment) {
        board.Model().At(moment, [this] { board.SetInput("B18", false); });
    }
    void NoFlagAt(sim::Nanoseconds moment) {
        board.Model().At(moment, [this] { board.SetInput("B18", true); });
    }
    /// Has the sensor read at this moment too: polling waits at most until something happens.
    void ReadingAt(sim::Nanoseconds moment) {
        board.Model().At(moment, [] {});
    }

    bool Search(std::uint32_t speed = 360) {
        board.Forget();
        const sim::Nanoseconds begin = board.Now();
        const bool found = instrument.cycle.doFindStartPosition(speed);
        took = board.Now() - begin;
        readings = CountOf(board, "read B18/value") + CountOf(board, "/value EACCES");
        EXPECT_FALSE(board.Channel(1).enabled);
        EXPECT_FALSE(board.Line("A2").level || board.Line("A4").level);
        EXPECT_FALSE(board.Line("B18").exported);
        return found;
    }

    Instrument instrument;
    sim::SimulatedBoard& board = instrument.board;
    sim::Nanoseconds took = 0;
    int readings = 0;
};

} // namespace tavrelin
