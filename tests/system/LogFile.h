#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tavrelin {

/// The figures of a result record, as its columns come.
struct LoggedResult {
    double absorbance = 0.0;
    double chlorine = 0.0;
    double dark = 0.0;
    double reference = 0.0;
    double reactedSample = 0.0;
};

/// The lines of a log that are neither a sample's nor a result's whole record; a last line without
/// an end counts as one.
std::vector<std::string> TornLines(const std::string& log);

/// The result records, as they stand and as numbers.
std::vector<std::string> ResultLines(const std::string& log);
std::vector<LoggedResult> ResultsIn(const std::string& log);

/// The readings that were logged, in counts.
std::vector<long> ReadingsIn(const std::string& log);

/// How many samples of a step were logged.
std::size_t SamplesOf(const std::string& step, const std::string& log);

} // namespace tavrelin
