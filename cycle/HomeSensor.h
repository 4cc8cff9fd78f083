#pragma once

#include "platform/GpioPin.h"

namespace tavrelin {

/// The optical sensor that sees the flag marking the reagent pump's start position. Owns its line
/// while it lives; a line that cannot be had shows only in that every read fails.
class HomeSensor {
  public:
    HomeSensor();

    /// True while the flag is in the sensor (line low); false also when the line cannot be read.
    bool IsStopPosition();

    /// True while the flag is out of the sensor (line high); false also when the line cannot be
    /// read.
    bool IsLevelHigh();

  private:
    GpioPin pin_;
};

} // namespace tavrelin
