#include "app/RunCycleStep.h"

#include "app/AbsorbanceCalculator.h"
#include "app/ChlorineCalculator.h"
#include "app/ResultRecord.h"
#include "app/StatusReport.h"
#include "base/Console.h"
#include "base/LocalTime.h"
#include "cycle/StepExecution.h"
#include "storage/DataLog.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <string>

namespace tavrelin {

float lastChlorineConcentration = 0.0F;

namespace {

using StepSuccess = std::array<bool, kStepResults>;

// The wall clock around a step, kept for whoever looks at a running instrument with a debugger.
struct StepTimes {
    timespec begin{};
    timespec end{};
};

void AnnounceStep(const StateTable& table) {
    ReportStatus(lastChlorineConcentration, table.Description());
    PrintLineAndFlush("main.cpp, 889: " + std::to_string(table.Step()) + ", " +
                      (table.ValveStatus() ? "1" : "0"));
}

StepSuccess ExecuteStep(const StateTable& table, MeasurementCycle& cycle) {
    StepSuccess success{};
    doStepRequest(cycle, table.MotorAngle(), table.MotorSpeed(), table.FindStartPosition(),
                  table.Duration(), table.LEDStatus(), table.StirringStatus(), table.SRVDStatus(),
                  table.ADCMonitorStatus(), table.ValveStatus(), table.Description(),
                  success.data(), kStepResults);
    return success;
}

// Status 0 is meant: a supervisor tells failure from success by the console only.
void StopOnHardwareFailure(const StepSuccess& success) {
    for (std::size_t index = 0; index < success.size(); ++index) {
        if (!success[index]) {
            PrintLine("Failed Index:  " + std::to_string(index));
            ReportStatus(0.0F, "!!!Error: Hardware Failure!!!");
            std::exit(0);
        }
    }
}

MeasurementResult ComputeResult(const MeasurementCycle& cycle) {
    const float dark = cycle.DarkCount();
    const float reference = cycle.Reference();
    const float sample = cycle.ReactedSample();
    return {.absorbance = AbsorbanceCalculator().Absorbance(reference, dark, sample),
            .chlorine = ChlorineCalculator().ChlorineConcentration(reference, dark, sample),
            .darkCount = dark,
            .reference = reference,
            .reactedSample = sample};
}

// Without a card the record is lost, the measurement is not: the log's answers are not looked at.
void FinishMeasurement(const StateTable& table, const MeasurementCycle& cycle) {
    const MeasurementResult result = ComputeResult(cycle);
    lastChlorineConcentration = result.chlorine;
    DataLog log(DayLogPath(DateText()));
    log.open();
    log.write(ResultRecord(result));
    log.close();
    ReportStatus(lastChlorineConcentration, table.Description());
}

} // namespace

void RunCycleStep(StateTable* table, MeasurementCycle* cycle) {
    if (table == nullptr || cycle == nullptr) {
        return;
    }
    StepTimes times;
    ::clock_gettime(CLOCK_REALTIME, &times.begin);
    AnnounceStep(*table);
    StopOnHardwareFailure(ExecuteStep(*table, *cycle));
    ::clock_gettime(CLOCK_REALTIME, &times.end);
    if (table->Step() == table->Count()) {
        FinishMeasurement(*table, *cycle);
    }
    table->Next();
}

} // namespace tavrelin
