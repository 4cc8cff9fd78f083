#include "app/AbsorbanceCalculator.h"

#include <cmath>

namespace tavrelin {

bool AbsorbanceCalculator::SetDarkCount(float value) {
    darkCount_ = value;
    return !std::isnan(value);
}

bool AbsorbanceCalculator::SetReferenceReading(float value) {
    referenceReading_ = value;
    return !std::isnan(value);
}

bool AbsorbanceCalculator::SetSampleReading(float value) {
    sampleReading_ = value;
    return !std::isnan(value);
}

float AbsorbanceCalculator::Absorbance() const {
    return IsDegenerate() ? -1.0F : LogarithmOfRatio();
}

float AbsorbanceCalculator::Absorbance(float referenceReading, float darkCount,
                                       float sampleReading) {
    referenceReading_ = referenceReading;
    darkCount_ = darkCount;
    sampleReading_ = sampleReading;
    return Absorbance();
}

float AbsorbanceCalculator::LogarithmOfRatio() const {
    // A ratio of 0 or less gives minus infinity or NaN, which the record shows as they are.
    const float ratio = (referenceReading_ - darkCount_) / (sampleReading_ - darkCount_);
    return static_cast<float>(std::log10(static_cast<double>(ratio)));
}

} // namespace tavrelin
