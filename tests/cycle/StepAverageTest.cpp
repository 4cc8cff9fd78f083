#include "tests/cycle/Instrument.h"

#include <string>

namespace tavrelin {
namespace {

using sim::SimulatedBoard;

constexpr const char* kDark = "Dark Count Measurement";
constexpr const char* kReference = "Reference Optical Measurement";
constexpr const char* kReacted = "Reacted Sample Optical Measurement";

MeasurementState Sampling(const std::string& description, std::uint32_t duration = 0) {
    return {.Duration = duration, .ADCMonitorStatus = true, .Description = description};
}

/// The cycle's readings hold marks that no measurement gives.
class StepAverage : public testing::Test {
  protected:
    StepAverage() {
        cycle.SetDarkCount(-1.5F);
        cycle.SetReference(-2.5F);
        cycle.SetReactedSample(-3.5F);
    }

    void ExpectReadings(float dark, float reference, float reacted) const {
        EXPECT_EQ(cycle.DarkCount(), dark);
        EXPECT_EQ(cycle.Reference(), reference);
        EXPECT_EQ(cycle.ReactedSample(), reacted);
    }

    Instrument instrument;
    MeasurementCycle& cycle = instrument.cycle;
};

TEST_F(StepAverage, OfAnOpticalMeasurementIsItsReadingAndOfAnyOtherStepDiscarded) {
    for (const char* description : {"Mixing", "", "Sample SRDV Measurement"}) {
        instrument.Run(Sampling(description));
    }
    ExpectReadings(-1.5F, -2.5F, -3.5F);
    instrument.Run(Sampling(kDark));
    ExpectReadings(20000.0F, -2.5F, -3.5F);
    instrument.Run(Sampling(kReference));
    ExpectReadings(20000.0F, 20000.0F, -3.5F);
    instrument.Run(Sampling(kReacted));
    ExpectReadings(20000.0F, 20000.0F, 20000.0F);
}

TEST_F(StepAverage, IsDiscardedWhenOneCharacterOfTheTextDiffers) {
    for (const std::string text : {kDark, kReference, kReacted}) {
        for (std::size_t place = 0; place < text.size(); ++place) {
            std::string wrong = text;
            wrong[place] = text[place] == 'x' ? 'y' : 'x';
            instrument.Run(Sampling(wrong));
        }
        instrument.Run(Sampling(text + " "));
        instrument.Run(Sampling(" " + text));
        instrument.Run(Sampling(text.substr(0, text.size() - 1)));
        instrument.Run(Sampling(text.substr(1)));
        ExpectReadings(-1.5F, -2.5F, -3.5F);
    }
}

TEST_F(StepAverage, IsNotTakenInAStepThatDoesNotSample) {
    instrument.Run({.Duration = 1000, .StirringStatus = true, .Description = kDark});
    ExpectReadings(-1.5F, -2.5F, -3.5F);
}

TEST_F(StepAverage, KeepsItsValueUntilItsStepRunsAgain) {
    instrument.Run(Sampling(kDark));
    for (const char* description : {kReference, "Mixing", kDark}) {
        EXPECT_EQ(cycle.DarkCount(), 20000.0F);
        MeasurementState lit = Sampling(description);
        lit.LEDStatus = true;
        instrument.Run(lit);
    }
    ExpectReadings(3000000.0F, 3000000.0F, -3.5F);
}

float AverageOf(const std::vector<std::int32_t>& readings) {
    Instrument instrument(Answering(readings));
    instrument.Run(Sampling(kDark, 1000));
    return instrument.cycle.DarkCount();
}

TEST(StepAverageOf, FourReadingsIsTheirSumByTheirNumberInSinglePrecisionAndInTheirOrder) {
    EXPECT_EQ(AverageOf({100, 200, 400, 1000}), 425.0F);
    EXPECT_EQ(AverageOf({-3, 2, -5, -1}), -1.75F);
    // Double precision, or another order, would give 8388606.5.
    EXPECT_EQ(AverageOf({16777214, 16777214, -1, -1}), 8388607.0F);
}

TEST(StepAverageOf, NoReadingIsNotANumber) {
    SimulatedBoard board;
    MeasurementCycle cycle; // without converter
    for (const char* description : {kDark, kReference, kReacted}) {
        RunStep(board, cycle, Sampling(description));
    }
    EXPECT_THAT(cycle.DarkCount(), testing::IsNan());
    EXPECT_THAT(cycle.Reference(), testing::IsNan());
    EXPECT_THAT(cycle.ReactedSample(), testing::IsNan());
}

} // namespace
} // namespace tavrelin
