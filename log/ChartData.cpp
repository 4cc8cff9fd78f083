#include "log/ChartData.h"

#include "log/Source.h"
#include "log/Statistics.h"
#include "log/Stripes.h"
#include "log/Zone.h"

#include <algorithm>

namespace tavrelin::daylog {

namespace {

/// What the line goes through, but for negative values far below the others.
Range ShownOf(const ChartData& data, std::size_t figure) {
    Range negative;
    Range good;
    for (const ChartData::Record& record : data.records) {
        if (record.IsOnLine(figure)) {
            const bool isNegative = figure == ChartData::kChlorine && record.flag == Flag::Negative;
            (isNegative ? negative : good).Add(record.figures.at(figure));
        }
    }
    if (good.from > good.to) {
        return negative;
    }
    const bool isNear = negative.from > good.from - good.Length();
    return {isNear ? std::min(good.from, negative.from) : good.from, good.to};
}

/// The same with some room, and from 0 where that is near.
Range RangeOf(const ChartData& data, std::size_t figure) {
    const Range shown = ShownOf(data, figure);
    const bool isChlorine = figure == ChartData::kChlorine;
    const double least = isChlorine ? std::max(std::abs(shown.to) * 0.02, 1e-3) : 10.0;
    Range range = shown.Widened(0.06, least);
    if (shown.from >= 0.0 && shown.from < shown.to / 2) {
        range.from = 0.0;
    }
    return range;
}

} // namespace

void Range::Add(double number) {
    if (std::isfinite(number)) {
        from = std::min(from, number);
        to = std::max(to, number);
    }
}

Range Range::Widened(double part, double least) const {
    if (from > to) {
        return {0.0, 1.0};
    }
    const double room = std::max(Length() * part, (least - Length()) / 2);
    return {from - room, to + room};
}

ChartData ReadChartData(const Options& options) {
    ChartData data;
    Cycles cycles;
    ZonedClock clock;
    std::optional<std::int64_t> before;
    ReadRecords(options.paths, [&](const Entry& entry, const std::string&) {
        if (entry.kind != Entry::Kind::Result || !options.Selects(entry.time)) {
            return;
        }
        const Figures& figures = entry.figures;
        data.records.push_back(
            {entry.time,
             FlagOf(figures),
             {static_cast<float>(figures.chlorine * options.scale),
              static_cast<float>(figures.dark), static_cast<float>(figures.reference)}});
        data.flagged += data.records.back().flag == Flag::None ? 0 : 1;
        data.times.Add(static_cast<double>(entry.time));
        const std::int64_t now = clock.At(entry.time).utc;
        if (before && now >= *before) {
            cycles.Add({now - *before, *before, now});
        }
        before = now;
    });
    data.longestCycle = cycles.Empty() ? 0 : 2 * cycles.Median();
    data.gaps = cycles.CountAbove(data.longestCycle);
    return data;
}

PanelData PanelDataOf(const ChartData& data, std::size_t figure, const Range& times) {
    const Range range = RangeOf(data, figure);
    const double edge = range.Length() * 1e-3;
    Stripes line(times.from, times.to);
    Stripes flagged(times.from, times.to);
    CivilSeconds before = 0;
    for (const ChartData::Record& record : data.records) {
        const auto time = static_cast<double>(record.time);
        const double value = record.figures.at(figure);
        if (record.time < before || record.time - before > data.longestCycle) {
            line.Break();
        }
        before = record.time;
        const bool isOnLine = record.IsOnLine(figure);
        if (isOnLine) {
            line.Add(time, value);
        } else {
            line.Break();
        }
        if (!isOnLine || (figure == ChartData::kChlorine && record.flag != Flag::None)) {
            const double mark = std::isnan(value) ? range.from : value;
            flagged.Add(time, std::clamp(mark, range.from + edge, range.to - edge));
        }
    }
    return {range, line.Text(), flagged.Text()};
}

} // namespace tavrelin::daylog
