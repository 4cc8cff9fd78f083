#pragma once

#include "simulator/testing/SimulatedBoard.h"

#include <string>

namespace tavrelin {

/// "write /sys/class/pwm/pwmchip0/pwm0/enable "1"" with a short name for the path: "write
/// pwm0/enable "1"".
std::string ShortOperation(const std::string& line);

/// What the code under test made happen, in its order, with short names for the paths: "thread 2:
/// write pwm0/enable "1"". Things that happen by themselves are told of the board.
sim::Texts Happenings(const sim::SimulatedBoard& board);

/// The same without what only looks: status of files, mount table.
sim::Texts Deeds(const sim::SimulatedBoard& board);

/// Number of entries of Happenings that hold the text.
int CountOf(const sim::SimulatedBoard& board, const std::string& text);

} // namespace tavrelin
