#pragma once

#include "simulator/board/Board.h"

#include <string>

namespace sim {

/// What outlives a program that ends: exported lines with direction, level, edge and active_low,
/// levels of outputs that nobody exports, channels with period, duty cycle, enable and polarity,
/// the mounted card. A line of text each; a mount for reading only is not among it.
std::string KeptState(const Board& board);

/// What outlives it behind the lines: the card in its slot, the shaft, the cell, and the clock in
/// whole seconds, which RestoreState leaves to whoever makes the board.
std::string KeptWorld(const Board& board);

/// Sets the board to what such a text tells. False for any other text, the board then being in
/// between.
bool RestoreState(Board& board, const std::string& text);

} // namespace sim
