#include "cycle/MeasurementCycle.h"

#include "cycle/CycleConsole.h"
#include "cycle/StartPosition.h"
#include "devices/Wiring.h"

#include <new>
#include <utility>

namespace tavrelin {

namespace {

// A device that there is no memory for is a null one, not an exception.
template <typename Device, typename... Arguments>
std::unique_ptr<Device> CreateOrNull(Arguments&&... arguments) {
    return std::unique_ptr<Device>(new (std::nothrow)
                                       Device(std::forward<Arguments>(arguments)...));
}

} // namespace

bool MeasurementCycle::Init() {
    CreateDevices();
    if (stirrer_ == nullptr) {
        return false;
    }
    SetupLines();
    return true;
}

bool MeasurementCycle::Prime() {
    if (reagentPump_ == nullptr || valve_ == nullptr) {
        PrintCycleLine(162, "NULL Pointer ERROR!");
        return false;
    }
    // The pump turns whatever the valve answers: its failure is told, not acted on.
    PrintCycleSuccess(150, valve_->Init());
    PrintCycleSuccess(152, valve_->ValveOn(wiring::kValveOpenDuty));
    const bool moved =
        reagentPump_->MoveAngle(wiring::kPrimeAngle, wiring::kPumpDuty, wiring::kPrimeTime, false);
    PrintCycleSuccess(158, valve_->ValveOff());
    return moved;
}

bool MeasurementCycle::doFindStartPosition(std::uint32_t speed) {
    return tavrelin::doFindStartPosition(reagentPump_.get(), speed);
}

// Each only if the one before it was created.
void MeasurementCycle::CreateDevices() {
    externalAdc_ = CreateOrNull<SpiDevice>();
    if (externalAdc_ != nullptr) {
        led_ =
            CreateOrNull<PwmChannel>(wiring::kLedChannel, wiring::kLedFrequency, wiring::kLedDuty);
    }
    if (led_ != nullptr) {
        reagentPump_ = CreateOrNull<StepperDriverMotor>(wiring::kPumpChannel);
    }
    if (reagentPump_ != nullptr) {
        valve_ = CreateOrNull<ValvePWM>(wiring::kValveChannel, wiring::kValveFrequency);
    }
    if (valve_ != nullptr) {
        stirrer_ = CreateOrNull<StepperDriver>(wiring::kStirrerChannel);
    }
}

// A line that cannot be had shows when its device is used; the drivers have told by then.
void MeasurementCycle::SetupLines() {
    using namespace wiring;
    stirrer_->SetupEnablePin(kStirrerEnable.bank, kStirrerEnable.bit);
    reagentPump_->SetupPins(kPumpEnable.bank, kPumpEnable.bit, kPumpDirection.bank,
                            kPumpDirection.bit);
    reagentPump_->SetupCurrentLimitPins(kPumpCurrentLimit1.bank, kPumpCurrentLimit1.bit,
                                        kPumpCurrentLimit2.bank, kPumpCurrentLimit2.bit,
                                        kPumpCurrentLimit3.bank, kPumpCurrentLimit3.bit,
                                        kPumpMovingCurrent);
}

} // namespace tavrelin
