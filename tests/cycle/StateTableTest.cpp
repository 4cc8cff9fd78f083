#include "cycle/StateTable.h"

#include <gtest/gtest.h>

#include <array>
#include <type_traits>

namespace tavrelin {
namespace {

// In the order of the method sheet's columns.
struct SheetRow {
    int step;
    const char* description;
    std::uint32_t duration;
    bool led, stirring, srvd, adc, find;
    float angle;
    std::uint32_t speed;
    bool valve;
};

constexpr std::array<SheetRow, 17> kSheet = {{
    {1, "Verify Flag (Home Poisition)", 1000, 0, 0, 0, 1, 0, 0.0F, 0, 0},
    {2, "Dark Count Measurement", 1000, 0, 0, 0, 1, 0, 0.0F, 0, 0},
    {3, "Verify Flag (No Light)", 1000, 1, 1, 0, 1, 0, 0.0F, 0, 1},
    {4, "Sample Flush & Delivery Verify Flow", 1000, 1, 0, 1, 1, 0, 0.0F, 0, 1},
    {5, "Sample Flush & Delivery", 1000, 1, 1, 1, 1, 0, 0.0F, 0, 1},
    {6, "Sample Settling Time", 1000, 1, 0, 0, 1, 0, 0.0F, 0, 0},
    {7, "Reference Optical Measurement", 1000, 1, 0, 0, 1, 0, 0.0F, 0, 0},
    {8, "Optional Mitigation", 0, 1, 0, 0, 1, 0, 0.0F, 0, 0},
    {9, "Reference SRDV Measurement", 0, 1, 0, 0, 1, 0, 0.0F, 0, 0},
    {10, "Pre-mix Stirring", 1000, 1, 1, 1, 1, 0, 0.0F, 0, 0},
    {11, "Reagent Addition", 1000, 1, 0, 1, 1, 1, 360.0F, 200, 0},
    {12, "Verify Flag Sensor (light)", 1000, 1, 0, 1, 1, 0, 0.0F, 0, 0},
    {13, "Mixing", 1000, 1, 1, 1, 1, 0, 0.0F, 0, 0},
    {14, "Color Development (debubbling)", 1000, 1, 0, 0, 1, 0, 0.0F, 0, 0},
    {15, "Reacted Sample Optical Measurement", 1000, 1, 0, 0, 1, 0, 0.0F, 0, 0},
    {16, "Sample SRDV Measurement", 0, 1, 0, 0, 1, 0, 0.0F, 0, 0},
    {17, "Sanity Check", 0, 0, 0, 0, 0, 0, 0.0F, 0, 0},
}};

void ExpectCurrent(const StateTable& table, const SheetRow& row) {
    SCOPED_TRACE(row.description);
    EXPECT_EQ(table.Step(), row.step);
    EXPECT_EQ(table.Description(), row.description);
    EXPECT_EQ(table.Duration(), row.duration);
    EXPECT_EQ(table.LEDStatus(), row.led);
    EXPECT_EQ(table.StirringStatus(), row.stirring);
    EXPECT_EQ(table.SRVDStatus(), row.srvd);
    EXPECT_EQ(table.ADCMonitorStatus(), row.adc);
    EXPECT_EQ(table.FindStartPosition(), row.find);
    EXPECT_EQ(table.MotorAngle(), row.angle);
    EXPECT_EQ(table.MotorSpeed(), row.speed);
    EXPECT_EQ(table.ValveStatus(), row.valve);
}

TEST(StateTable, HoldsTheSeventeenStepsOfTheMethodSheet) {
    StateTable table;
    for (const SheetRow& row : kSheet) {
        ExpectCurrent(table, row);
        table.Next();
    }
}

TEST(StateTable, CountsItsSteps) {
    EXPECT_EQ(StateTable().Count(), 17U);
    EXPECT_EQ(StateTable::MaximumCount(), 134217727U);
}

TEST(StateTable, NumbersEveryStepByItsPosition) {
    StateTable table;
    for (unsigned position = 1; position <= table.Count(); ++position) {
        EXPECT_EQ(table.Step(), position);
        table.Next();
    }
}

TEST(StateTable, ReturnsToTheFirstStepAfterTheLast) {
    StateTable table;
    EXPECT_EQ(table.Step(), 1);
    for (int next = 0; next < 16; ++next) {
        table.Next();
    }
    EXPECT_EQ(table.Step(), 17);
    table.Next();
    EXPECT_EQ(table.Step(), 1);
}

TEST(StateTable, MovesThePumpOnlyInStepEleven) {
    StateTable table;
    for (unsigned step = 1; step <= 17; ++step, table.Next()) {
        EXPECT_EQ(table.MotorSpeed(), step == 11 ? 200U : 0U) << step;
        EXPECT_EQ(table.MotorAngle(), step == 11 ? 360.0F : 0.0F) << step;
        EXPECT_EQ(table.FindStartPosition(), step == 11) << step;
    }
}

TEST(StateTable, OpensTheValveOnlyInStepsThreeToFive) {
    StateTable table;
    for (unsigned step = 1; step <= 17; ++step, table.Next()) {
        EXPECT_EQ(table.ValveStatus(), step >= 3 && step <= 5) << step;
    }
}

TEST(StateTable, SamplesInAllStepsButTheLast) {
    StateTable table;
    for (unsigned step = 1; step <= 17; ++step, table.Next()) {
        EXPECT_EQ(table.ADCMonitorStatus(), step != 17) << step;
    }
}

TEST(StateTable, HasACursorOfItsOwnInEachTable) {
    StateTable used;
    used.Next();
    const StateTable fresh;
    EXPECT_EQ(fresh.Step(), 1);
    EXPECT_EQ(used.Step(), 2);
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

TEST(MeasurementState, KeepsItsFieldsInTheirOrderAndIsCopiedByValue) {
    const MeasurementState row{9, 8000, true, false, true, false, true, 1.5F, 77, true, "Row"};
    MeasurementState copy = row;
    copy.Description += "s";
    EXPECT_EQ(row.Description, "Row");
    EXPECT_EQ(copy.Step, 9);
    EXPECT_EQ(copy.Duration, 8000U);
    EXPECT_TRUE(copy.LEDStatus && copy.SRVDStatus && copy.FindStartPosition && copy.ValveStatus);
    EXPECT_FALSE(copy.StirringStatus || copy.ADCMonitorStatus);
    EXPECT_EQ(copy.MotorAngle, 1.5F);
    EXPECT_EQ(copy.MotorSpeed, 77U);
}

static_assert(std::is_same_v<decltype(MeasurementState::Step), std::uint8_t>);
static_assert(std::is_same_v<decltype(MeasurementState::Duration), std::uint32_t>);
static_assert(std::is_same_v<decltype(MeasurementState::MotorAngle), float>);
static_assert(std::is_same_v<decltype(MeasurementState::MotorSpeed), std::uint32_t>);

} // namespace
} // namespace tavrelin
