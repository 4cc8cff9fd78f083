#include "cycle/StepExecution.h"

#include "base/Trace.h"
#include "cycle/CycleConsole.h"
#include "cycle/MeasurementCycle.h"
#include "cycle/StartedWorkers.h"
#include "cycle/StepRequest.h"
#include "cycle/StepWorkers.h"

#include <utility>

namespace tavrelin {

namespace {

// The caller's flags. The lengths that the setters ask for are the instrument's own and do not
// follow from the slots; the header has them in one list.
class StepFlags {
  public:
    StepFlags(bool* flags, std::uint32_t count) : flags_(flags), count_(count) {}

    [[nodiscard]] bool Given() const { return flags_ != nullptr; }
    [[nodiscard]] bool LongerThan(std::uint32_t length) const { return Given() && count_ > length; }
    void Set(std::uint32_t slot, bool value) { flags_[slot] = value; }

  private:
    bool* flags_;
    std::uint32_t count_;
};

// One step from the first start to the last join. The order of starts and of joins is fixed.
class StepExecution {
  public:
    StepExecution(StepRequest& request, StepFlags flags) : request_(request), flags_(flags) {}

    void StartWorkers() {
        StartReagentDelivery();
        Trace("MeasurementCycle.cpp", "doStepRequest", 434);
        workers_.Start(StepWorker::Led, doLEDThread, request_);
        StartValve();
        StartStirring();
        if (flags_.LongerThan(3)) {
            flags_.Set(kReservedSlot, true);
        }
        StartMonitoring();
    }

    // Answers the success of the last join that counts.
    bool JoinWorkers(MeasurementCycle& cycle) {
        JoinStirring();
        JoinValve();
        JoinMonitoring(cycle);
        JoinLed();
        JoinReagentDelivery();
        return ok_;
    }

  private:
    void StartReagentDelivery() {
        if (request_.state.MotorSpeed != 0) {
            workers_.Start(StepWorker::ReagentDelivery, doReagentDeliveryThread, request_);
        } else if (flags_.Given()) {
            flags_.Set(kReagentSlot, true);
        }
    }

    // What the valve's start gives, the stirring's replaces: monitoring looks at the last of the
    // two.
    void StartValve() {
        ok_ = workers_.Start(StepWorker::Valve, doValveThread, request_);
        if (ok_) {
            PrintCycleLine(451, "Elements: " + std::to_string(workers_.Count()));
        }
    }

    void StartStirring() {
        if (request_.state.StirringStatus) {
            ok_ = workers_.Start(StepWorker::Stirring, doStirringThread, request_);
        } else if (flags_.Given()) {
            flags_.Set(kStirringSlot, true);
        }
    }

    // Refused for want of ok_ counts as not needed, a thread that did not start as failed.
    void StartMonitoring() {
        if (request_.state.ADCMonitorStatus && ok_) {
            ok_ = workers_.Start(StepWorker::Monitoring, doADCMonitorThread, request_);
        } else if (flags_.LongerThan(2)) {
            flags_.Set(kMonitoringSlot, true);
        }
    }

    void JoinStirring() {
        if (const auto end = workers_.Join(StepWorker::Stirring)) {
            ok_ = end->joined;
            if (flags_.LongerThan(0)) {
                flags_.Set(kStirringSlot, end->ran);
            }
        }
    }

    void JoinValve() {
        if (const auto end = workers_.Join(StepWorker::Valve)) {
            ok_ = end->joined;
            if (flags_.LongerThan(5)) {
                flags_.Set(kValveSlot, end->ran);
            }
        }
    }

    // Leaves ok_ as it is: whether the monitoring was joined is told by its flag alone.
    void JoinMonitoring(MeasurementCycle& cycle) {
        if (const auto end = workers_.Join(StepWorker::Monitoring)) {
            if (flags_.LongerThan(2)) {
                flags_.Set(kMonitoringSlot, end->ran);
            }
            StoreAverage(cycle);
        }
    }

    void JoinLed() {
        if (const auto end = workers_.Join(StepWorker::Led)) {
            // Without a flag to tell it by, the step fails here.
            ok_ = flags_.LongerThan(2) && end->joined;
            if (flags_.LongerThan(2)) {
                flags_.Set(kLedSlot, end->ran);
            }
        }
    }

    void JoinReagentDelivery() {
        if (const auto end = workers_.Join(StepWorker::ReagentDelivery)) {
            ok_ = end->joined;
            if (ok_ && flags_.LongerThan(1)) {
                flags_.Set(kReagentSlot, end->ran);
            }
        }
    }

    // Single precision, in the order in which the samples came; NaN without any.
    [[nodiscard]] float Average() const {
        float sum = 0.0F;
        for (const float sample : *request_.samples) {
            sum += sample;
        }
        return sum / static_cast<float>(request_.samples->size());
    }

    void StoreAverage(MeasurementCycle& cycle) const {
        const float average = Average();
        if (request_.state.Description == kDarkCountStep) {
            cycle.SetDarkCount(average);
        } else if (request_.state.Description == kReferenceStep) {
            cycle.SetReference(average);
        } else if (request_.state.Description == kReactedSampleStep) {
            cycle.SetReactedSample(average);
        }
    }

    StepRequest& request_;
    StepFlags flags_;
    StartedWorkers workers_;
    bool ok_ = false;
};

} // namespace

bool doStepRequest(MeasurementCycle& cycle, const MeasurementState& state, bool* results,
                   std::uint32_t resultCount) {
    std::vector<float> samples;
    StepRequest request = {.state = state,
                           .samples = &samples,
                           .stirrer = cycle.Stirrer(),
                           .reagentPump = cycle.ReagentPump(),
                           .led = cycle.Led(),
                           .externalAdc = cycle.ExternalAdc(),
                           .valve = cycle.Valve()};
    StepExecution step(request, StepFlags(results, resultCount));
    step.StartWorkers();
    return step.JoinWorkers(cycle);
}

bool doStepRequest(MeasurementCycle& cycle, float motorAngle, std::uint32_t motorSpeed,
                   bool findStartPosition, std::uint32_t duration, bool ledStatus,
                   bool stirringStatus, bool srvdStatus, bool adcMonitorStatus, bool valveStatus,
                   std::string description, bool* results, std::uint32_t resultCount) {
    return doStepRequest(cycle,
                         {.Duration = duration,
                          .LEDStatus = ledStatus,
                          .StirringStatus = stirringStatus,
                          .SRVDStatus = srvdStatus,
                          .ADCMonitorStatus = adcMonitorStatus,
                          .FindStartPosition = findStartPosition,
                          .MotorAngle = motorAngle,
                          .MotorSpeed = motorSpeed,
                          .ValveStatus = valveStatus,
                          .Description = std::move(description)},
                         results, resultCount);
}

} // namespace tavrelin
