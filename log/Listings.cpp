#include "base/NumberText.h"
#include "log/Complaint.h"
#include "log/Options.h"
#include "log/Source.h"
#include "log/Table.h"
#include "log/Zone.h"

#include <algorithm>
#include <vector>

namespace tavrelin::daylog {

namespace {

/// Times as the options ask for: as the log has them, or with the offset of the named zone.
class Times {
  public:
    explicit Times(const Options& options) : zoned_(options.zoned) {}
    std::string Text(CivilSeconds time) {
        return zoned_ ? IsoText(clock_.At(time)) : IsoText(time);
    }

  private:
    bool zoned_;
    ZonedClock clock_;
};

struct Reading {
    CivilSeconds time = 0;
    std::int64_t counts = 0;
    std::string step;
};

} // namespace

int ListResults(const Options& options) {
    Table table({{"time", true}, {"absorbance"}, {"chlorine"}, {"dark"}, {"reference"}, {"sample"}},
                options.json);
    Times times(options);
    ReadRecords(options.paths, [&](const Entry& entry, const std::string&) {
        if (entry.kind == Entry::Kind::Result && options.Selects(entry.time)) {
            const Figures& figures = entry.figures;
            table.Add({times.Text(entry.time), GeneralText(figures.absorbance),
                       GeneralText(figures.chlorine), GeneralText(figures.dark),
                       GeneralText(figures.reference), GeneralText(figures.sample)});
        }
    });
    return table.Finish() && !Complained() ? kDone : kFound;
}

int ListSamples(const Options& options) {
    Table table({{"time", true}, {"reading"}, {"step", true}}, options.json);
    Times times(options);
    std::vector<Reading> measurement; ///< what came since the last result, where one is asked for
    const auto show = [&](const Reading& reading) {
        table.Add({times.Text(reading.time), std::to_string(reading.counts), reading.step});
    };
    ReadRecords(options.paths, [&](const Entry& entry, const std::string&) {
        if (entry.kind == Entry::Kind::Sample && options.Selects(entry.time) &&
            entry.step.find(options.step) != std::string_view::npos) {
            const Reading reading{entry.time, entry.reading, std::string(entry.step)};
            if (options.measurement) {
                measurement.push_back(reading);
            } else {
                show(reading);
            }
        } else if (entry.kind == Entry::Kind::Result) {
            if (options.measurement == entry.time) {
                std::for_each(measurement.begin(), measurement.end(), show);
            }
            measurement.clear();
        }
    });
    return table.Finish() && !Complained() ? kDone : kFound;
}

} // namespace tavrelin::daylog
