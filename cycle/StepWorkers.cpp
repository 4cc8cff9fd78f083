#include "cycle/StepWorkers.h"

#include "cycle/CycleConsole.h"
#include "cycle/OpticalMonitor.h"
#include "cycle/ReagentDelivery.h"
#include "cycle/StepRequest.h"
#include "devices/Wiring.h"

#include <pthread.h>

namespace tavrelin {

namespace {

bool SwitchLed(const StepRequest* request) {
    if (request == nullptr || request->led == nullptr ||
        request->led->IsEnabled() == request->state.LEDStatus) {
        return false;
    }
    request->led->Enable(request->state.LEDStatus);
    return true;
}

// Set anew in every step, and told on the console; the status is false whatever came of it.
bool SwitchValve(const StepRequest* request) {
    if (request == nullptr) {
        return false;
    }
    ValvePWM* const valve = request->valve;
    if (request->state.ValveStatus) {
        PrintCycleSuccess(1091, valve != nullptr && valve->ValveOn(wiring::kValveOpenDuty));
    } else {
        PrintCycleSuccess(1096, valve != nullptr && valve->ValveOff());
    }
    return false;
}

bool Stir(const StepRequest* request) {
    if (request != nullptr && request->stirrer != nullptr) {
        // false: asleep, not spinning
        request->stirrer->Run(wiring::kStirrerDuty, wiring::kStirrerFrequency,
                              request->state.Duration, false);
    }
    return true;
}

} // namespace

void* doLEDThread(void* request) {
    bool status = SwitchLed(static_cast<StepRequest*>(request));
    pthread_exit(&status);
}

void* doValveThread(void* request) {
    bool status = SwitchValve(static_cast<StepRequest*>(request));
    pthread_exit(&status);
}

void* doStirringThread(void* request) {
    bool status = Stir(static_cast<StepRequest*>(request));
    pthread_exit(&status);
}

void* doReagentDeliveryThread(void* request) {
    bool status = DeliverReagent(static_cast<StepRequest*>(request));
    pthread_exit(&status);
}

void* doADCMonitorThread(void* request) {
    bool status = MonitorOptics(static_cast<StepRequest*>(request));
    pthread_exit(&status);
}

} // namespace tavrelin
