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

void AnnounceStep(const MeasurementState& step) {
    ReportStatus(lastChlorineConcentration, step.Description);
    // Flushed by itself: without a valve worker nothing else would be for the rest of the step.
    PrintLineAndFlush("main.cpp, 889: " + std::to_string(step.Step) + ", " +
                      (step.ValveStatus ? "1" : "0"));
}

// What doStepRequest answers is not looked at: it stands for one join only, the flags for all.
StepSuccess ExecuteStep(const MeasurementState& step, MeasurementCycle& cycle) {
    StepSuccess success{};
    doStepRequest(cycle, step, success.data(), kStepResults);
    return success;
}

// Status 0 is meant: a supervisor tells failure from success by the console only. The devices stay
// as the step left them.
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
void FinishMeasurement(const MeasurementState& lastStep, const MeasurementCycle& cycle) {
    const MeasurementResult result = ComputeResult(cycle);
    lastChlorineConcentration = result.chlorine;
    DataLog log(DayLogPath(DateText()));
    log.open(); // first: mounting takes time, and the record's time is that of its writing
    log.write(ResultRecord(result));
    log.close();
    ReportStatus(lastChlorineConcentration, lastStep.Description);
}

} // namespace

void RunCycleStep(StateTable* table, MeasurementCycle* cycle) {
    if (table == nullptr || cycle == nullptr) {
        return;
    }
    // Taken around every step; nothing reads them.
    timespec begin{};
    timespec end{};
    ::clock_gettime(CLOCK_REALTIME, &begin);
    const MeasurementState& step = table->Current();
    AnnounceStep(step);
    StopOnHardwareFailure(ExecuteStep(step, *cycle));
    ::clock_gettime(CLOCK_REALTIME, &end);
    // The number that the row carries decides, not its place.
    if (step.Step == table->Count()) {
        FinishMeasurement(step, *cycle);
    }
    table->Next();
}

} // namespace tavrelin
