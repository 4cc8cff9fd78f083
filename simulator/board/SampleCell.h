#pragma once

#include "simulator/board/Nanoseconds.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sim {

/// What is in the measuring cell.
struct CellContent {
    double absorbance = 0.0;     ///< true one of the sample
    std::int64_t doseSteps = 0;  ///< of the pump, with reagent for it
    Nanoseconds developing = -1; ///< for how long the colour has; negative: not at all
};

/// The measuring cell: opening the valve flushes in a fresh sample, the pump adds reagent, stirring
/// lets the colour develop, and the colour takes light away. Fully developed, a sample shows its
/// true absorbance exactly.
class SampleCell {
  public:
    /// Steps of the pump that deliver a full dose: seven eighths of a turn, more reagent changes
    /// nothing.
    static constexpr std::int64_t kFullDoseSteps = 1400;
    /// From the first stirring after the dose to full colour.
    static constexpr Nanoseconds kDevelopmentTime = Milliseconds(1500);
    /// The valve's coil does not let go within this time: a shorter pause is no closing.
    static constexpr Nanoseconds kValveRelease = Milliseconds(20);

    /// True absorbances: the first flush (priming) and the first measurement take the first one,
    /// each later flush the next, and the last one stays.
    explicit SampleCell(std::vector<double> absorbances)
        : absorbances_(std::move(absorbances)), absorbance_(NextAbsorbance()) {}

    void SetValve(Nanoseconds now, bool open);
    void SetStirring(Nanoseconds now, bool on, std::int64_t pumpSteps);
    /// The absorbance that the light path sees, 0 for a sample without reagent.
    double Absorbance(Nanoseconds now, std::int64_t pumpSteps) const;
    /// Keeps the cell washed out while the valve is open: reagent of that time is lost.
    void PumpTurned(std::int64_t pumpSteps);
    CellContent Content(Nanoseconds now, std::int64_t pumpSteps) const;
    void Fill(const CellContent& content, Nanoseconds now, std::int64_t pumpSteps);
    /// Samples flushed in so far, the priming included.
    std::size_t Flushes() const { return flushes_; }
    /// True absorbance of the sample in the cell.
    double TrueAbsorbance() const { return absorbance_; }
    /// True absorbance of the sample that the next flush brings.
    double NextAbsorbance() const;
    /// Puts another in its place in the list; the last one stays.
    void SetNext(double absorbance);

  private:
    /// Of the list, for the next flush: the first measurement's serves the priming too.
    std::size_t NextPlace() const { return flushes_ == 0 ? 0 : flushes_ - 1; }

    std::vector<double> absorbances_;
    std::size_t flushes_ = 0;
    double absorbance_;
    bool open_ = false;
    bool stirring_ = false;
    Nanoseconds closedAt_ = -kValveRelease - 1;
    std::int64_t cleanAtStep_ = 0;
    Nanoseconds developingSince_ = kNever;
};

} // namespace sim
