#pragma once

namespace tavrelin {

class RemoteIndicator;
class Speaker;

// Routines for whoever services the instrument; the run calls none of them.

/// Prints the steps of a measurement on standard output. Goes through them twice, so that it also
/// shows the wrap from the last to the first.
void PrintStateTable();

/// Switches the sound on at full volume and starts to repeat alarm.wav of the working directory,
/// without waiting for its end. False without a speaker or when the repetition could not be
/// started.
bool SoundAlarm(Speaker* speaker);

/// Sets the indicator up on the board's lines and shows colour 1. False without an indicator only:
/// what it could not do the indicator says itself.
bool StartIndicator(RemoteIndicator* indicator);

} // namespace tavrelin
