#include "tests/system/LogFile.h"

#include "tests/support/Text.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace tavrelin {

namespace {

const std::string kDate = "[0-9]{4}-[0-9]{2}-[0-9]{2}";
const std::string kFigure = "(nan|-?inf|-?[0-9][0-9.]*(e[+-][0-9]{2})?)";

using Pattern = testing::Matcher<const std::string&>;

bool IsSample(const std::string& line) {
    static const Pattern sample = testing::MatchesRegex(
        kDate + " [0-9]{2}:[0-9]{1,2}:[0-9]{1,2}, {0,7}-?[0-9]{1,8},[A-Z][^,]+,,");
    return sample.Matches(line) && Split(line, ',')[1].size() >= 8;
}

bool IsResult(const std::string& line) {
    static const Pattern result =
        testing::MatchesRegex(kDate + " [0-9]{2}:[0-9]{2}\\.[0-9]{2},,(," + kFigure + "){5}");
    return result.Matches(line);
}

} // namespace

std::vector<std::string> TornLines(const std::string& log) {
    std::vector<std::string> torn;
    for (const std::string& line : LinesOf(log)) {
        if (!IsSample(line) && !IsResult(line)) {
            torn.push_back(line);
        }
    }
    if (!log.empty() && log.back() != '\n') {
        torn.emplace_back("the last line has no end");
    }
    return torn;
}

std::vector<std::string> ResultLines(const std::string& log) {
    std::vector<std::string> results;
    for (const std::string& line : LinesWith(log, ",,,")) {
        if (IsResult(line)) {
            results.push_back(line);
        }
    }
    return results;
}

std::vector<LoggedResult> ResultsIn(const std::string& log) {
    std::vector<LoggedResult> results;
    for (const std::string& line : ResultLines(log)) {
        const std::vector<std::string> fields = Split(line, ',');
        const auto figure = [&](std::size_t column) {
            return std::strtod(fields.at(column).c_str(), nullptr);
        };
        results.push_back({.absorbance = figure(3),
                           .chlorine = figure(4),
                           .dark = figure(5),
                           .reference = figure(6),
                           .reactedSample = figure(7)});
    }
    return results;
}

std::vector<long> ReadingsIn(const std::string& log) {
    std::vector<long> readings;
    for (const std::string& line : LinesOf(log)) {
        if (IsSample(line)) {
            readings.push_back(std::strtol(Split(line, ',').at(1).c_str(), nullptr, 10));
        }
    }
    return readings;
}

std::size_t SamplesOf(const std::string& step, const std::string& log) {
    return LinesWith(log, "," + step + ",,").size();
}

} // namespace tavrelin
