#pragma once

#include "simulator/board/Board.h"

#include <string>

namespace sim {

/// What outlives a program that ends: exported lines with direction, level and edge, levels of
/// outputs that nobody exports, channels with period, duty cycle and enable, the mounted card. A
/// line of text each; polarity, active_low, a mount for reading only, shaft, cell and clock are not
/// among it.
std::string KeptState(const Board& board);

/// Sets the board to what such a text tells. False for any other text, the board then being in
/// between.
bool RestoreState(Board& board, const std::string& text);

} // namespace sim
