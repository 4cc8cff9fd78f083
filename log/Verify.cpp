#include "base/NumberText.h"
#include "log/Complaint.h"
#include "log/GrabFile.h"
#include "log/Options.h"
#include "log/Source.h"
#include "log/Table.h"

#include <algorithm>
#include <cmath>

namespace tavrelin::daylog {

namespace {

/// Offers a result to all grab samples that it is near to; of two as near the first stays.
void Offer(CivilSeconds time, double result, CivilSeconds within, std::vector<Grab>& grabs) {
    for (Grab& grab : grabs) {
        const CivilSeconds distance = std::abs(time - grab.time);
        if (distance <= within &&
            (!grab.found || distance < std::abs(grab.resultTime - grab.time))) {
            grab.found = true;
            grab.resultTime = time;
            grab.result = result;
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
    ReadRecords(options.paths, [&](const Entry& entry, const std::string&) {
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
