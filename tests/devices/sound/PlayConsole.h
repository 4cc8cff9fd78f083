#pragma once

#include <string>

namespace tavrelin {

/// What is told after a period: what came of writing it, how many are left, the next frequency.
std::string PlayProgress(long written, unsigned left, unsigned frequency);

/// All that is told of a sweep in which every period was written.
std::string PlayReport(unsigned periodFrames, unsigned bufferFrames, unsigned periodTime,
                       unsigned periods);

} // namespace tavrelin
