#pragma once

#include <string>

namespace tavrelin {

/// What is told before the first period.
std::string PlayHeading(unsigned periodFrames, unsigned bufferFrames, unsigned periodTime,
                        unsigned periods);

/// What is told after a period: what came of writing it, how many are left, the next frequency.
std::string PlayProgress(long written, unsigned left, unsigned frequency);

/// The progress of a whole sweep in which every period was written.
std::string WholeProgress(unsigned periodFrames, unsigned periods);

} // namespace tavrelin
