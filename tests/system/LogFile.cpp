#include "tests/system/LogFile.h"

#include "tests/system/Text.h"

#include <cstdlib>
#include <regex>

namespace tavrelin {

namespace {

const std::regex& SampleRecord() {
    static const std::regex record(
        R"(\d{4}-\d\d-\d\d \d\d:\d{1,2}:\d{1,2},(?=.{8,9},) *-?\d+,[A-Z][^,]+,,)",
        std::regex::optimize);
    return record;
}

const std::regex& ResultRecord() {
    static const std::regex record(
        R"(\d{4}-\d\d-\d\d \d\d:\d\d\.\d\d,,(,(nan|-?inf|-?\d[0-9.]*(e[+-]\d\d)?)){5})",
        std::regex::optimize);
    return record;
}

bool IsResult(const std::string& line) {
    return std::regex_match(line, ResultRecord());
}

} // namespace

std::vector<std::string> TornLines(const std::string& log) {
    std::vector<std::string> torn;
    for (const std::string& line : LinesOf(log)) {
        if (!std::regex_match(line, SampleRecord()) && !IsResult(line)) {
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
        if (!IsResult(line)) {
            readings.push_back(std::strtol(Split(line, ',').at(1).c_str(), nullptr, 10));
        }
    }
    return readings;
}

std::size_t SamplesOf(const std::string& step, const std::string& log) {
    return LinesWith(log, "," + step + ",,").size();
}

} // namespace tavrelin
