#pragma once

#include "platform/SpiDevice.h"

#include <cstdint>

namespace tavrelin {

/// What a conversion answers when the converter had nothing new: it then sends the command back.
inline constexpr float kNoNewResult = 4294967296.0F;

/// Asks the converter for `channel`, waits for the conversion and reads it: 25 bits as they came,
/// or kNoNewResult. 0 at once without a device. A transfer that fails is not noticed: the
/// converter is read even when it could not be asked, and a read that fails gives zeros.
float doRawConversion(std::uint8_t channel, const SpiDevice* device);

/// Reading of the optical detector in counts, -16777216 to 16777214. The converter sends 25 bits,
/// of which the highest is set for counts from 0 on, and they pass through a single-precision
/// number, which keeps 24. So a count below 0 comes as it is, and one from 0 on comes out even: an
/// odd one as its neighbour that 4 divides (1 as 0, 3 as 4). Full scale, 16777215, rounds up to a
/// 26th bit and reads -16777216, like a word of zeros.
///
/// Repeats the last reading when nothing new came; 0 before the first. That one is kept
/// process-wide: one thread at a time may call.
float doADCConversion(const SpiDevice* device);

} // namespace tavrelin
