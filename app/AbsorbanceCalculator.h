#pragma once

namespace tavrelin {

/// Absorbance from three detector readings: dark, through the unreacted sample (reference) and
/// through the reacted sample. Readings may be in any unit; only their ratios matter.
class AbsorbanceCalculator {
  public:
    /// Each stores the value, NaN included, and answers whether it is a number.
    bool SetDarkCount(float value);
    bool SetReferenceReading(float value);
    bool SetSampleReading(float value);

    /// Decadic logarithm of the dark-corrected ratio of reference to sample; -1 when sample and
    /// dark are equal. A ratio of 0 gives minus infinity, a negative one NaN.
    [[nodiscard]] float Absorbance() const;
    /// The same for these readings, which are stored unexamined. Note their order.
    float Absorbance(float referenceReading, float darkCount, float sampleReading);

  protected:
    /// Sample and dark are equal: there is no ratio to take.
    [[nodiscard]] bool IsDegenerate() const { return sampleReading_ == darkCount_; }
    /// Logarithm of the ratio, in double precision rounded to float. Absorbance and concentration
    /// share it because they must agree to the last bit.
    [[nodiscard]] float LogarithmOfRatio() const;

  private:
    float darkCount_ = 0.0F;
    float referenceReading_ = 0.0F;
    float sampleReading_ = 0.0F;
};

} // namespace tavrelin
