#include "app/ChlorineCalculator.h"

namespace tavrelin {

namespace {

constexpr float kSlope = 1714.8182F; // concentration per unit of absorbance

} // namespace

float ChlorineCalculator::ChlorineConcentration() const {
    // The slope times an absorbance of -1.
    return IsDegenerate() ? -kSlope : LogarithmOfRatio() * kSlope;
}

float ChlorineCalculator::ChlorineConcentration(float referenceReading, float darkCount,
                                                float sampleReading) {
    // Readings after the first that is NaN are not taken over.
    const bool accepted = SetDarkCount(darkCount) && SetReferenceReading(referenceReading) &&
                          SetSampleReading(sampleReading);
    return accepted ? ChlorineConcentration() : 0.0F;
}

} // namespace tavrelin
