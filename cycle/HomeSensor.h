#pragma once

#include "platform/GpioPin.h"

namespace tavrelin {

/// The optical sensor that sees the flag marking the reagent pump's start position. Takes its line
/// while it lives. What fails then is not told: a line that somebody else has exported reads as
/// usual, and is unexported at the end.
class HomeSensor {
  public:
    HomeSensor();

    /// True while the flag is in the sensor (line low), and when the value cannot be opened;
    /// false when the line is not exported.
    bool IsStopPosition();

    /// True while the flag is out of the sensor (line high); false also when the line
    /// cannot be read.
    bool IsLevelHigh();

  private:
    GpioPin pin_;
};

} // namespace tavrelin
