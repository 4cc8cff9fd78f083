#pragma once

#include <string>

namespace tavrelin {

/// What a finished measurement leaves in the day's log.
struct MeasurementResult {
    float absorbance;
    float chlorine;
    float darkCount; ///< detector counts, like the two below
    float reference;
    float reactedSample;
};

/// The result's line of the log, newline included: local time, three empty columns that the layout
/// reserves, then the five figures with six significant digits.
std::string ResultRecord(const MeasurementResult& result);

} // namespace tavrelin
