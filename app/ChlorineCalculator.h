#pragma once

#include "app/AbsorbanceCalculator.h"

namespace tavrelin {

/// Chlorine concentration from the same readings: absorbance times the calibration slope, in the
/// unit of that calibration.
class ChlorineCalculator : public AbsorbanceCalculator {
  public:
    /// -1714.8182 when sample and dark reading are equal.
    [[nodiscard]] float ChlorineConcentration() const;
    /// The same for these readings; 0 when one of them is NaN. Note their order.
    float ChlorineConcentration(float referenceReading, float darkCount, float sampleReading);
};

} // namespace tavrelin
