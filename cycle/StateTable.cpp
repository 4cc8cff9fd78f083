#include "cycle/StateTable.h"

namespace tavrelin {

namespace {

constexpr bool o = false;
constexpr bool X = true;

} // namespace

// The texts stand as the instrument has always written them. That step 3 has its LED on in spite of
// its name, and that only step 17 samples nothing, is meant.
// clang-format off
StateTable::StateTable() : rows_{
//  step  ms LED stir SRVD ADC find   angle speed valve
    { 1, 1000, o,    o,    o,   X,    o,   0.0F,     0,     o, "Verify Flag (Home Poisition)"},
    { 2, 1000, o,    o,    o,   X,    o,   0.0F,     0,     o, kDarkCountStep},
    { 3, 1000, X,    X,    o,   X,    o,   0.0F,     0,     X, "Verify Flag (No Light)"},
    { 4, 1000, X,    o,    X,   X,    o,   0.0F,     0,     X, "Sample Flush & Delivery Verify Flow"},
    { 5, 1000, X,    X,    X,   X,    o,   0.0F,     0,     X, "Sample Flush & Delivery"},
    { 6, 1000, X,    o,    o,   X,    o,   0.0F,     0,     o, "Sample Settling Time"},
    { 7, 1000, X,    o,    o,   X,    o,   0.0F,     0,     o, kReferenceStep},
    { 8,    0, X,    o,    o,   X,    o,   0.0F,     0,     o, "Optional Mitigation"},
    { 9,    0, X,    o,    o,   X,    o,   0.0F,     0,     o, "Reference SRDV Measurement"},
    {10, 1000, X,    X,    X,   X,    o,   0.0F,     0,     o, "Pre-mix Stirring"},
    {11, 1000, X,    o,    X,   X,    X, 360.0F,   200,     o, "Reagent Addition"},
    {12, 1000, X,    o,    X,   X,    o,   0.0F,     0,     o, "Verify Flag Sensor (light)"},
    {13, 1000, X,    X,    X,   X,    o,   0.0F,     0,     o, "Mixing"},
    {14, 1000, X,    o,    o,   X,    o,   0.0F,     0,     o, "Color Development (debubbling)"},
    {15, 1000, X,    o,    o,   X,    o,   0.0F,     0,     o, kReactedSampleStep},
    {16,    0, X,    o,    o,   X,    o,   0.0F,     0,     o, "Sample SRDV Measurement"},
    {17,    0, o,    o,    o,   o,    o,   0.0F,     0,     o, "Sanity Check"},
} {}
// clang-format on

void StateTable::Next() {
    ++current_;
    if (current_ == rows_.size()) {
        current_ = 0;
    }
}

} // namespace tavrelin
