#include "tests/cycle/Instrument.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;

constexpr const char* kDark = "Dark Count Measurement";
constexpr const char* kReference = "Reference Optical Measurement";
constexpr const char* kReacted = "Reacted Sample Optical Measurement";

Scenario Answering(const std::vector<std::int32_t>& readings) {
    Scenario scenario;
    scenario.board.converterWords = WordsFor(readings);
    return scenario;
}

Step Sampling(const std::string& description, std::uint32_t duration = 0) {
    return {.duration = duration, .sampling = true, .description = description};
}

/// The cycle's readings hold marks that no measurement gives.
class StepAverage : public testing::Test {
  protected:
    StepAverage() { Mark(); }

    void Mark() {
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
    SimulatedBoard& board = instrument.board;
    MeasurementCycle& cycle = instrument.cycle;
};

TEST_F(StepAverage, OfTheDarkCountStepIsTheDarkCount) {
    instrument.Run(Sampling(kDark));
    ExpectReadings(20000.0F, -2.5F, -3.5F);
}

TEST_F(StepAverage, OfTheReferenceStepIsTheReference) {
    instrument.Run(Sampling(kReference));
    ExpectReadings(-1.5F, 20000.0F, -3.5F);
}

TEST_F(StepAverage, OfTheReactedSampleStepIsTheReactedSample) {
    instrument.Run(Sampling(kReacted));
    ExpectReadings(-1.5F, -2.5F, 20000.0F);
}

TEST_F(StepAverage, OfAnyOtherStepIsDiscarded) {
    for (const char* description : {"Mixing", "", "Sample SRDV Measurement"}) {
        instrument.Run(Sampling(description));
        ExpectReadings(-1.5F, -2.5F, -3.5F);
    }
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
    instrument.Run({.duration = 1000, .stirring = true, .description = kDark});
    ExpectReadings(-1.5F, -2.5F, -3.5F);
}

TEST_F(StepAverage, KeepsItsValueUntilItsStepRunsAgain) {
    instrument.Run(Sampling(kDark));
    instrument.Run({.led = true, .sampling = true, .description = kReference});
    instrument.Run({.led = true, .sampling = true, .description = "Mixing"});
    ExpectReadings(20000.0F, 3000000.0F, -3.5F);
    instrument.Run({.led = true, .sampling = true, .description = kDark});
    ExpectReadings(3000000.0F, 3000000.0F, -3.5F);
}

TEST(StepAverageOf, FourReadingsIsTheirSumByTheirNumber) {
    Instrument instrument(Answering({100, 200, 400, 1000}));
    instrument.Run(Sampling(kDark, 1000));
    EXPECT_EQ(instrument.cycle.DarkCount(), 425.0F);
}

TEST(StepAverageOf, NegativeReadingsIsNegative) {
    Instrument instrument(Answering({-3, 2, -5, -1}));
    instrument.Run(Sampling(kDark, 1000));
    EXPECT_EQ(instrument.cycle.DarkCount(), -1.75F);
}

// Double precision, or another order, would give 8388606.5.
TEST(StepAverageOf, LargeReadingsIsAddedUpInSinglePrecisionInTheirOrder) {
    Instrument instrument(Answering({16777214, 16777214, -1, -1}));
    instrument.Run(Sampling(kDark, 1000));
    EXPECT_EQ(instrument.cycle.DarkCount(), 8388607.0F);
}

TEST(StepAverageOf, NoReadingIsNotANumber) {
    SimulatedBoard board;
    MeasurementCycle cycle; // without converter
    RunStep(board, cycle, Sampling(kDark));
    EXPECT_TRUE(std::isnan(cycle.DarkCount()));
    EXPECT_EQ(cycle.Reference(), 0.0F);
    RunStep(board, cycle, Sampling(kReference));
    EXPECT_TRUE(std::isnan(cycle.Reference()));
    RunStep(board, cycle, Sampling(kReacted));
    EXPECT_TRUE(std::isnan(cycle.ReactedSample()));
}

} // namespace
} // namespace tavrelin
