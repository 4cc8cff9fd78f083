#include "app/CalculatorSelfTest.h"

#include "tests/support/ConsoleOf.h"

namespace tavrelin {
namespace {

TEST(CalculatorSelfTest, PrintsTheTwoAbsorbances) {
    EXPECT_EQ(ConsoleOf(testAbsorbance), "Absorbance Value(1):  0.107906\n"
                                         "Absorbance Value(2):  0.5688\n");
}

TEST(CalculatorSelfTest, PrintsTheTwoConcentrations) {
    EXPECT_EQ(ConsoleOf(testChlorineConcentration), "Chlorine Value(1):  185.04\n"
                                                    "Chlorine Value(2):  975.389\n");
}

} // namespace
} // namespace tavrelin
