#include "app/CalculatorSelfTest.h"

#include "tests/support/CapturedConsole.h"

#include <limits>

namespace tavrelin {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(CalculatorSelfTest, PrintsTheTwoAbsorbances) {
    EXPECT_EQ(ConsoleOf(testAbsorbance), "Absorbance Value(1):  0.107906\n"
                                         "Absorbance Value(2):  0.5688\n");
}

TEST(CalculatorSelfTest, PrintsTheTwoConcentrations) {
    EXPECT_EQ(ConsoleOf(testChlorineConcentration), "Chlorine Value(1):  185.04\n"
                                                    "Chlorine Value(2):  975.389\n");
}

TEST(CalculatorSelfTest, TellsTheLineOfAReadingThatIsNoNumberInPlaceOfTheFirstValue) {
    struct Refusal {
        SelfTestReadings readings;
        const char* absorbanceLine;
        const char* chlorineLine;
    };
    for (const Refusal& refusal : {Refusal{{.darkCount = kNaN, .sample = kNaN}, "773", "839"},
                                   Refusal{{.reference = kNaN, .sample = kNaN}, "762", "828"},
                                   Refusal{{.sample = kNaN}, "751", "817"}}) {
        EXPECT_EQ(ConsoleOf([&] { PrintAbsorbances(refusal.readings); }),
                  std::string("ERROR:  main.cpp: testAbsorbance, ") + refusal.absorbanceLine +
                      "\nAbsorbance Value(2):  0.5688\n");
        EXPECT_EQ(ConsoleOf([&] { PrintConcentrations(refusal.readings); }),
                  std::string("ERROR:  main.cpp: testChlorineConcentration, ") +
                      refusal.chlorineLine + "\nChlorine Value(2):  975.389\n");
    }
}

} // namespace
} // namespace tavrelin
