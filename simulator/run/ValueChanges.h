#pragma once

#include "simulator/kernel/BufferedFile.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace sim {

/// A file of value changes (IEEE 1364) in microseconds. Logic is one-bit wires and figures are
/// reals, because not every reader knows vectors; texts are of the type "string", which readers
/// know or leave out.
class ValueChanges {
  public:
    /// All variables, in the order of the file's header.
    enum Variable : std::size_t {
        LightOn,
        LightDuty,
        ValveOpen,
        ValveDuty,
        StirrerEnable,
        Stirring,
        StirrerFrequency,
        PumpEnable,
        PumpDirection,
        PumpCurrent0,
        PumpCurrent1,
        PumpCurrent2,
        PumpFrequency,
        ShaftAngle,
        Flag,
        HomeSensor,
        Converting,
        ConverterCommand,
        ConverterResult,
        ConverterCount,
        CardPresent,
        CardMounted,
        CardBytes,
        StepNumber,
        StepName,
        MeasurementCount,
        ConsoleLine,
        Fault,
        FaultCount,
        FaultCall,
        Count
    };

    static constexpr double kUndriven = -1.0; ///< value of a wire

    /// Begins a file, replacing it, as EventLog::WriteTo does.
    bool Open(const std::string& path, FileBuffer& buffer) { return file_.Open(path, buffer); }
    bool IsOpen() const { return file_.IsOpen(); }
    /// Writes the header and the values at time 0; date: of the board's clock then.
    void Begin(const std::string& date, const std::array<double, Count>& values);
    /// What is put from now on happens at this time; one that has passed changes nothing.
    void GoTo(std::int64_t microseconds);
    std::int64_t Time() const { return time_; }
    void Put(std::size_t variable, double value);
    void PutText(std::size_t variable, std::string_view text);
    void Flush() { file_.Flush(); }
    /// Writes nothing more: the file is another process's.
    void Abandon() { file_.Abandon(); }

  private:
    BufferedFile file_;
    std::int64_t time_ = 0;
};

} // namespace sim
