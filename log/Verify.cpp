#include "base/NumberText.h"
#include "log/Complaint.h"
#include "log/Options.h"
#include "log/Source.h"
#include "log/Table.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <string_view>

namespace tavrelin::daylog {

namespace {

/// A grab sample, and the result that is nearest to it so far.
struct Grab {
    CivilSeconds time = 0;
    double value = 0.0;
    bool found = false;
    CivilSeconds resultTime = 0;
    double result = 0.0;
};

/// Takes the next cell of a line, without the blanks and quotes around it.
std::string_view TakeCell(std::string_view& line) {
    constexpr std::string_view around = " \t\r\"\xEF\xBB\xBF"; // with the byte order mark

    const std::size_t comma = std::min(line.find(','), line.size());
    std::string_view cell = line.substr(0, comma);
    line.remove_prefix(std::min(comma + 1, line.size()));
    cell.remove_prefix(std::min(cell.find_first_not_of(around), cell.size()));
    return cell.substr(0, cell.find_last_not_of(around) + 1);
}

/// An ISO time, or one as the log spells it: 2026-03-07 09:00.17, 2026-03-07 09:0:16.
std::optional<CivilSeconds> ParseTime(std::string text) {
    std::replace(text.begin(), text.end(), '.', ':');
    for (auto at = text.find(':'); at != std::string::npos; at = text.find(':', at + 1)) {
        const std::size_t end = std::min(text.find(':', at + 1), text.size());
        text.insert(at + 1, end == at + 2 ? 1 : 0, '0');
    }
    return ParseIsoTime(text);
}

bool ParseValue(std::string_view text, double& value) {
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && rest == text.data() + text.size() && std::isfinite(value) &&
           value >= 0.0;
}

bool ParseGrab(std::string_view line, Grab& grab) {
    const auto time = ParseTime(std::string(TakeCell(line)));
    grab.time = time.value_or(0);
    return time && ParseValue(TakeCell(line), grab.value);
}

/// The grab samples of a file by their times; the lines that are none are told by Complain.
std::vector<Grab> ReadGrabs(const std::string& path) {
    constexpr std::uint64_t most = 20;
    std::vector<Grab> grabs;
    std::uint64_t number = 0;
    std::uint64_t bad = 0;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::string_view cells = line;
        const std::string_view first = TakeCell(cells);
        const bool isHeader = ++number == 1 && !first.empty() &&
                              std::isalpha(static_cast<unsigned char>(first[0])) != 0;
        Grab grab;
        if (ParseGrab(line, grab)) {
            grabs.push_back(grab);
        } else if (!isHeader && !(first.empty() && cells.empty()) && ++bad <= most) {
            Complain(path + ":" + std::to_string(number) +
                     ": not a time and a value, such as 2026-03-07T09:00,0.85: " + Shown(line));
        }
    }
    if (!file.is_open() || file.bad()) {
        ComplainOfErrno(path);
    }
    if (bad > most) {
        Complain(path + ": and " + std::to_string(bad - most) + " more such lines");
    }
    if (grabs.empty()) {
        Complain(path + ": no grab sample in it");
    }
    std::stable_sort(grabs.begin(), grabs.end(),
                     [](const Grab& a, const Grab& b) { return a.time < b.time; });
    return grabs;
}

/// Offers a result to all grab samples that it is near to; of two as near the first stays.
void Offer(CivilSeconds time, double result, CivilSeconds within, std::vector<Grab>& grabs) {
    auto at =
        std::lower_bound(grabs.begin(), grabs.end(), time - within,
                         [](const Grab& grab, CivilSeconds wanted) { return grab.time < wanted; });
    for (; at != grabs.end() && at->time <= time + within; ++at) {
        if (!at->found || std::abs(time - at->time) < std::abs(at->resultTime - at->time)) {
            at->found = true;
            at->resultTime = time;
            at->result = result;
        }
    }
}

/// A row of the table, and whether the result is within the limit.
bool AddVerdict(const Grab& grab, const Options& options, Table& table) {
    const double difference = grab.result - grab.value;
    const double limit = std::max(grab.value * options.tolerancePercent / 100, options.tolerance);
    // Decimal fractions: what is on the limit must not fail by its last binary digit.
    const double rounding = 1e-12 * std::max(grab.value, std::abs(grab.result));
    const bool passes = grab.found && std::abs(difference) <= limit + rounding;
    const auto ofResult = [&](const std::string& text) { return grab.found ? text : ""; };
    table.Add({IsoText(grab.time), GeneralText(grab.value), ofResult(IsoText(grab.resultTime)),
               ofResult(GeneralText(grab.result)), ofResult(GeneralText(difference)),
               grab.value > 0.0 ? ofResult(GeneralText(difference / grab.value * 100)) : "",
               GeneralText(limit),
               !grab.found ? "no result"
               : passes    ? "within"
                           : "out"});
    return passes;
}

} // namespace

int VerifyResults(const Options& options) {
    std::vector<Grab> grabs = ReadGrabs(options.grab);
    const auto within = static_cast<CivilSeconds>(options.withinMinutes * 60);
    ReadSources(FindSources(options.paths), [&](const Entry& entry, const std::string&) {
        if (entry.kind == Entry::Kind::Result && std::isfinite(entry.figures.chlorine)) {
            Offer(entry.time, entry.figures.chlorine * options.scale, within, grabs);
        }
    });
    Table table({{"time", true},
                 {"grab"},
                 {"result_time", true},
                 {"result"},
                 {"difference"},
                 {"percent"},
                 {"limit"},
                 {"verdict", true}},
                options.json);
    bool allWithin = true;
    for (const Grab& grab : grabs) {
        allWithin = AddVerdict(grab, options, table) && allWithin;
    }
    return table.Finish() && allWithin && !Complained() ? kDone : kFound;
}

} // namespace tavrelin::daylog
