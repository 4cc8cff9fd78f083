#pragma once

#include "service/Arguments.h"

namespace tavrelin::service {

// What the commands of tavrelin-service do: each reads its arguments, calls the routine of the
// instrument that it stands for, and answers an exit status after that routine's own answer.

int StateTableCommand(const Arguments& arguments);
int SelfTestCommand(const Arguments& arguments);

int SafeStateCommand(const Arguments& arguments);
int BoardCheckCommand(const Arguments& arguments);

int AlarmCommand(const Arguments& arguments);
int ToneCommand(const Arguments& arguments);
int VolumeCommand(const Arguments& arguments);

int IndicatorCommand(const Arguments& arguments);
int CableLengthCommand(const Arguments& arguments);
int ReadAdcCommand(const Arguments& arguments);

int RegisterCommand(const Arguments& arguments);
int WaitEdgeCommand(const Arguments& arguments);

int StorageCommand(const Arguments& arguments);
int CardCommand(const Arguments& arguments);
int LogMessageCommand(const Arguments& arguments);

} // namespace tavrelin::service
