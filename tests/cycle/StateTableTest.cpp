#include "cycle/StateTable.h"

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace tavrelin {
namespace {

/// The current step as its accessors tell it, in the order of the operator's table.
std::string RowOf(const StateTable& table) {
    std::ostringstream row;
    row << int{table.Step()} << " | " << table.Description() << " | " << table.Duration() << " | "
        << table.LEDStatus() << table.StirringStatus() << table.SRVDStatus()
        << table.ADCMonitorStatus() << table.FindStartPosition() << " | " << table.MotorAngle()
        << " " << table.MotorSpeed() << " | " << table.ValveStatus();
    return row.str();
}

TEST(StateTable, HoldsTheSeventeenStepsOfAMeasurementAndBeginsAgainAfterTheLast) {
    // step, description, ms, LED stir SRVD ADC find, degrees and degrees per second, valve
    const std::vector<std::string> measurement = {
        "1 | Verify Flag (Home Poisition) | 1000 | 00010 | 0 0 | 0",
        "2 | Dark Count Measurement | 1000 | 00010 | 0 0 | 0",
        "3 | Verify Flag (No Light) | 1000 | 11010 | 0 0 | 1",
        "4 | Sample Flush & Delivery Verify Flow | 1000 | 10110 | 0 0 | 1",
        "5 | Sample Flush & Delivery | 1000 | 11110 | 0 0 | 1",
        "6 | Sample Settling Time | 1000 | 10010 | 0 0 | 0",
        "7 | Reference Optical Measurement | 1000 | 10010 | 0 0 | 0",
        "8 | Optional Mitigation | 0 | 10010 | 0 0 | 0",
        "9 | Reference SRDV Measurement | 0 | 10010 | 0 0 | 0",
        "10 | Pre-mix Stirring | 1000 | 11110 | 0 0 | 0",
        "11 | Reagent Addition | 1000 | 10111 | 360 200 | 0",
        "12 | Verify Flag Sensor (light) | 1000 | 10110 | 0 0 | 0",
        "13 | Mixing | 1000 | 11110 | 0 0 | 0",
        "14 | Color Development (debubbling) | 1000 | 10010 | 0 0 | 0",
        "15 | Reacted Sample Optical Measurement | 1000 | 10010 | 0 0 | 0",
        "16 | Sample SRDV Measurement | 0 | 10010 | 0 0 | 0",
        "17 | Sanity Check | 0 | 00000 | 0 0 | 0"};
    StateTable table;
    EXPECT_EQ(table.Count(), 17U);
    for (int pass = 1; pass <= 2; ++pass) {
        for (const std::string& row : measurement) {
            EXPECT_EQ(RowOf(table), row) << "pass " << pass;
            table.Next();
        }
    }
}

TEST(StateTable, SaysHowManyStepsTheInstrumentCouldHold) {
    EXPECT_EQ(StateTable::MaximumCount(), 134217727U);
}

TEST(StateTable, HandsOutTheRowThatItsCursorIsOn) {
    StateTable table;
    const MeasurementState& first = table.Current();
    table.Next();
    EXPECT_EQ(first.Description, "Verify Flag (Home Poisition)") << "still the first";
    EXPECT_EQ(table.Current().Step, 2);
    EXPECT_EQ(StateTable().Current().Step, 1) << "each table has a cursor of its own";
}

TEST(StateTable, GivesTheDescriptionAsACopy) {
    const StateTable table;
    table.Description() += " changed";
    EXPECT_EQ(table.Description(), "Verify Flag (Home Poisition)");
}

TEST(MeasurementState, BeginsAsAFirstStepAtRest) {
    const MeasurementState row;
    EXPECT_EQ(row.Step, 1);
    EXPECT_EQ(row.Duration, 0U);
    EXPECT_FALSE(row.LEDStatus || row.StirringStatus || row.SRVDStatus || row.ADCMonitorStatus ||
                 row.FindStartPosition || row.ValveStatus);
    EXPECT_EQ(row.MotorAngle, 0.0F);
    EXPECT_EQ(row.MotorSpeed, 0U);
    EXPECT_EQ(row.Description, "");
}

TEST(MeasurementState, KeepsItsFieldsInTheirOrder) {
    const MeasurementState row{9, 8000, true, false, true, false, true, 1.5F, 77, true, "Row"};
    EXPECT_EQ(row.Step, 9);
    EXPECT_EQ(row.Duration, 8000U);
    EXPECT_TRUE(row.LEDStatus && row.SRVDStatus && row.FindStartPosition && row.ValveStatus);
    EXPECT_FALSE(row.StirringStatus || row.ADCMonitorStatus);
    EXPECT_EQ(row.MotorAngle, 1.5F);
    EXPECT_EQ(row.MotorSpeed, 77U);
    EXPECT_EQ(row.Description, "Row");
}

static_assert(std::is_same_v<decltype(MeasurementState::Step), std::uint8_t>);
static_assert(std::is_same_v<decltype(MeasurementState::Duration), std::uint32_t>);
static_assert(std::is_same_v<decltype(MeasurementState::MotorAngle), float>);
static_assert(std::is_same_v<decltype(MeasurementState::MotorSpeed), std::uint32_t>);

} // namespace
} // namespace tavrelin
