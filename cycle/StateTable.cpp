#include "cycle/StateTable.h"

#include <array>

namespace tavrelin {

namespace {

// A row as it is read against the instrument's method sheet.
struct Row {
    const char* description;
    std::uint32_t duration;
    bool led, stirring, srvd, adc, findStart;
    float angle;
    std::uint32_t speed;
    bool valve;
};

constexpr bool o = false;
constexpr bool X = true;

// The texts stand as the instrument has always written them. That step 3 has its LED on in spite of
// its name, and that only step 17 samples nothing, is meant.
// clang-format off
constexpr std::array<Row, 17> kMeasurement = {{
//                                           ms  LED stir SRVD ADC find  angle speed valve
    {"Verify Flag (Home Poisition)",       1000,  o,   o,   o,  X,  o,   0.0F,   0,  o},
    {kDarkCountStep,                       1000,  o,   o,   o,  X,  o,   0.0F,   0,  o},
    {"Verify Flag (No Light)",             1000,  X,   X,   o,  X,  o,   0.0F,   0,  X},
    {"Sample Flush & Delivery Verify Flow",1000,  X,   o,   X,  X,  o,   0.0F,   0,  X},
    {"Sample Flush & Delivery",            1000,  X,   X,   X,  X,  o,   0.0F,   0,  X},
    {"Sample Settling Time",               1000,  X,   o,   o,  X,  o,   0.0F,   0,  o},
    {kReferenceStep,                       1000,  X,   o,   o,  X,  o,   0.0F,   0,  o},
    {"Optional Mitigation",                   0,  X,   o,   o,  X,  o,   0.0F,   0,  o},
    {"Reference SRDV Measurement",            0,  X,   o,   o,  X,  o,   0.0F,   0,  o},
    {"Pre-mix Stirring",                   1000,  X,   X,   X,  X,  o,   0.0F,   0,  o},
    {"Reagent Addition",                   1000,  X,   o,   X,  X,  X, 360.0F, 200,  o},
    {"Verify Flag Sensor (light)",         1000,  X,   o,   X,  X,  o,   0.0F,   0,  o},
    {"Mixing",                             1000,  X,   X,   X,  X,  o,   0.0F,   0,  o},
    {"Color Development (debubbling)",     1000,  X,   o,   o,  X,  o,   0.0F,   0,  o},
    {kReactedSampleStep,                   1000,  X,   o,   o,  X,  o,   0.0F,   0,  o},
    {"Sample SRDV Measurement",               0,  X,   o,   o,  X,  o,   0.0F,   0,  o},
    {"Sanity Check",                          0,  o,   o,   o,  o,  o,   0.0F,   0,  o},
}};
// clang-format on

MeasurementState StateOf(const Row& row, std::uint8_t step) {
    return {.Step = step,
            .Duration = row.duration,
            .LEDStatus = row.led,
            .StirringStatus = row.stirring,
            .SRVDStatus = row.srvd,
            .ADCMonitorStatus = row.adc,
            .FindStartPosition = row.findStart,
            .MotorAngle = row.angle,
            .MotorSpeed = row.speed,
            .ValveStatus = row.valve,
            .Description = row.description};
}

} // namespace

StateTable::StateTable() {
    rows_.reserve(kMeasurement.size());
    std::uint8_t step = 0;
    for (const Row& row : kMeasurement) {
        rows_.push_back(StateOf(row, ++step));
    }
}

void StateTable::Next() {
    ++current_;
    if (current_ == rows_.size()) {
        current_ = 0;
    }
}

} // namespace tavrelin
