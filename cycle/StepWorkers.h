#pragma once

namespace tavrelin {

// The workers of a step, as thread entries. Each takes a StepRequest, may be handed null, and ends
// its thread with the address of a status byte in its own frame. That address only says that the
// worker ran: the byte is gone with the frame and nobody reads it.
//
// The work is done in a function of its own, so that no object with a destructor is alive in the
// frame that ends the thread. The address goes to pthread_exit because compilers turn the returned
// address of a local into null.

/// Switches the LED channel to the step's LEDStatus unless it is there already.
void* doLEDThread(void* request);

/// Opens or closes the sample valve and reports the outcome on the console.
void* doValveThread(void* request);

/// Runs the stirrer for the step's Duration.
void* doStirringThread(void* request);

/// Turns the reagent pump to the step's MotorAngle, or searches its start position.
void* doReagentDeliveryThread(void* request);

/// Samples the optical signal for the step's Duration and logs every sample.
void* doADCMonitorThread(void* request);

} // namespace tavrelin
