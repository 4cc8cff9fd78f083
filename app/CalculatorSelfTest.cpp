#include "app/CalculatorSelfTest.h"

#include "app/AbsorbanceCalculator.h"
#include "app/ChlorineCalculator.h"
#include "base/Console.h"
#include "base/NumberText.h"

#include <string>

namespace tavrelin {

namespace {

// Numbers that a refused reading is reported under, part of the text and fixed.
struct ErrorLines {
    int darkCount;
    int reference;
    int sample;
};

// 0 when all readings are accepted.
int RefusedLine(AbsorbanceCalculator& calculator, const SelfTestReadings& readings,
                const ErrorLines& lines) {
    if (!calculator.SetDarkCount(readings.darkCount)) {
        return lines.darkCount;
    }
    if (!calculator.SetReferenceReading(readings.reference)) {
        return lines.reference;
    }
    return calculator.SetSampleReading(readings.sample) ? 0 : lines.sample;
}

bool TakesReadings(AbsorbanceCalculator& calculator, const SelfTestReadings& readings,
                   const std::string& operation, const ErrorLines& lines) {
    const int refused = RefusedLine(calculator, readings, lines);
    if (refused != 0) {
        PrintLine("ERROR:  main.cpp: " + operation + ", " + std::to_string(refused));
    }
    return refused == 0;
}

void PrintValue(const std::string& label, float value) {
    PrintLine(label + GeneralText(static_cast<double>(value)));
}

} // namespace

void testAbsorbance() {
    PrintAbsorbances({});
}

void testChlorineConcentration() {
    PrintConcentrations({});
}

void PrintAbsorbances(const SelfTestReadings& readings) {
    AbsorbanceCalculator calculator;
    if (TakesReadings(calculator, readings, "testAbsorbance",
                      {.darkCount = 773, .reference = 762, .sample = 751})) {
        PrintValue("Absorbance Value(1):  ", calculator.Absorbance());
    }
    // By the order of the arguments 20 is the reference and 2890000 the dark count, as is meant.
    PrintValue("Absorbance Value(2):  ", calculator.Absorbance(20.0F, 2890000.0F, 2110000.0F));
}

void PrintConcentrations(const SelfTestReadings& readings) {
    ChlorineCalculator calculator;
    if (TakesReadings(calculator, readings, "testChlorineConcentration",
                      {.darkCount = 839, .reference = 828, .sample = 817})) {
        PrintValue("Chlorine Value(1):  ", calculator.ChlorineConcentration());
    }
    PrintValue("Chlorine Value(2):  ",
               calculator.ChlorineConcentration(20.0F, 2890000.0F, 2110000.0F));
}

} // namespace tavrelin
