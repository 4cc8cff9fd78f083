#pragma once

#include <cstdint>

namespace tavrelin {

/// Sleeps the given milliseconds; an interrupted sleep is taken up again for what is left of it.
void SleepMilliseconds(std::uint32_t milliseconds);

} // namespace tavrelin
