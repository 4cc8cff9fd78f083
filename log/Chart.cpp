#include "base/NumberText.h"
#include "log/Complaint.h"
#include "log/Flag.h"
#include "log/Gnuplot.h"
#include "log/Options.h"
#include "log/Source.h"
#include "log/Statistics.h"
#include "log/Table.h"
#include "log/Thinning.h"
#include "log/Zone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>

namespace tavrelin::daylog {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// A result record, as small as a chart of millions of them wants it.
struct Record {
    static constexpr std::uint32_t kTimeWentBack = UINT32_MAX;

    CivilSeconds time = 0;
    std::uint32_t cycle = 0; ///< seconds since the record before it
    Flag flag = Flag::None;
    float chlorine = 0.0F;
    float dark = 0.0F;
    float reference = 0.0F;

    /// Whether its figures are such that a line through them tells something.
    [[nodiscard]] bool IsOnLine() const { return flag == Flag::None || flag == Flag::Negative; }
};

struct Records {
    std::vector<Record> all;
    std::uint32_t longestCycle = 0; ///< what is longer is a gap
    std::uint64_t gaps = 0;
    std::uint64_t flagged = 0;
    CivilSeconds first = 0;
    CivilSeconds last = 0;
};

Records ReadRecords(const Options& options) {
    Records records;
    Cycles cycles;
    ZonedClock clock;
    std::optional<Moment> before;
    ReadSources(FindSources(options.paths), [&](const Entry& entry, const std::string&) {
        if (entry.kind != Entry::Kind::Result || !options.Selects(entry.time)) {
            return;
        }
        Record record{entry.time,
                      0,
                      FlagOf(entry.figures),
                      static_cast<float>(entry.figures.chlorine * options.scale),
                      static_cast<float>(entry.figures.dark),
                      static_cast<float>(entry.figures.reference)};
        const Moment moment = clock.At(entry.time);
        const std::int64_t cycle = before ? moment.utc - before->utc : 0;
        if (cycle >= 0 && before) {
            cycles.Add(cycle, before->utc);
        }
        const bool wentBack = !records.all.empty() && entry.time < records.all.back().time;
        record.cycle = wentBack ? Record::kTimeWentBack : static_cast<std::uint32_t>(cycle);
        records.flagged += record.flag == Flag::None ? 0 : 1;
        records.all.push_back(record);
        before = moment;
    });
    if (records.all.empty()) {
        return records;
    }
    const auto longest = cycles.Empty() ? 0 : 2 * cycles.Median();
    records.longestCycle = static_cast<std::uint32_t>(longest);
    records.gaps = cycles.CountAbove(longest);
    const auto [first, last] =
        std::minmax_element(records.all.begin(), records.all.end(),
                            [](const Record& a, const Record& b) { return a.time < b.time; });
    records.first = first->time;
    records.last = last->time;
    return records;
}

struct Range {
    double from = std::numeric_limits<double>::infinity();
    double to = -std::numeric_limits<double>::infinity();

    [[nodiscard]] bool IsEmpty() const { return from > to; }
    [[nodiscard]] double Length() const { return to - from; }
    void Add(double number) {
        if (std::isfinite(number)) {
            from = std::min(from, number);
            to = std::max(to, number);
        }
    }
    /// With this part of it as room on both sides; `least` is the length that it has at least.
    [[nodiscard]] Range Widened(double part, double least) const {
        if (IsEmpty()) {
            return {0.0, 1.0};
        }
        const double room = std::max(Length() * part, (least - Length()) / 2);
        return {from - room, to + room};
    }
    [[nodiscard]] std::string Text() const {
        std::array<char, 80> text{};
        std::snprintf(text.data(), text.size(), "[%.12g:%.12g]", from, to);
        return text.data();
    }
};

/// What one panel shows of each record.
using FigureOf = float Record::*;

/// All values that a line goes through, and flagged ones that are not far from them.
Range RangeOf(const Records& records, FigureOf figure) {
    Range good;
    Range any;
    for (const Record& record : records.all) {
        any.Add(record.*figure);
        if (record.flag == Flag::None) {
            good.Add(record.*figure);
        }
    }
    if (good.IsEmpty()) {
        return any;
    }
    Range range = good;
    for (const Record& record : records.all) {
        const double value = record.*figure;
        if (record.flag != Flag::None && value > good.from - good.Length() &&
            value < good.to + good.Length()) {
            range.Add(value);
        }
    }
    return range;
}

/// The distance of marks on an axis, so that there are `most` or so.
double MarkDistance(double length, int most) {
    const double least = length / most;
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (step * power >= least) {
            return step * power;
        }
    }
    return 10.0 * power;
}

/// A text that gnuplot takes as it stands.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("''") : std::string(1, c);
    }
    return quoted + "'";
}

std::string DateText(CivilSeconds time, bool withDay, bool withYear) {
    constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::string iso = IsoDate(time);
    std::string text = months.at(static_cast<std::size_t>(std::stoi(iso.substr(5, 2)) - 1));
    if (withDay) {
        text = std::to_string(std::stoi(iso.substr(8, 2))) + " " + text;
    }
    return withYear ? text + " " + iso.substr(0, 4) : text;
}

/// The marks of the time axis: round times, whose date stands below where it is another one than
/// that of the mark before.
class TimeAxis {
  public:
    explicit TimeAxis(Range range) : range_(range) {
        constexpr CivilSeconds minute = 60;
        constexpr CivilSeconds hour = 3600;
        for (const CivilSeconds step : {CivilSeconds{1},
                                        CivilSeconds{2},
                                        CivilSeconds{5},
                                        CivilSeconds{10},
                                        CivilSeconds{15},
                                        CivilSeconds{30},
                                        minute,
                                        2 * minute,
                                        5 * minute,
                                        10 * minute,
                                        15 * minute,
                                        30 * minute,
                                        hour,
                                        2 * hour,
                                        3 * hour,
                                        6 * hour,
                                        12 * hour,
                                        kSecondsPerDay,
                                        2 * kSecondsPerDay,
                                        7 * kSecondsPerDay}) {
            const double most = step < kSecondsPerDay ? 9.0 : 12.0;
            if (range.Length() <= most * static_cast<double>(step)) {
                AddEvery(step);
                return;
            }
        }
        AddMonths();
    }

    /// As gnuplot's command, with or without the texts.
    [[nodiscard]] std::string Command(bool texts) const {
        std::string marks;
        for (const auto& [time, text] : marks_) {
            marks += (marks.empty() ? "" : ", ") + (texts ? "\"" + text + "\"" : "''") + " " +
                     std::to_string(time);
        }
        return "set xtics (" + marks + ")\n";
    }

  private:
    void AddEvery(CivilSeconds step) {
        const auto from = static_cast<CivilSeconds>(std::ceil(range_.from));
        std::string date;
        // Days are counted from the begin of the first one.
        const CivilSeconds origin =
            step > kSecondsPerDay ? DayOf(from - 1) + kSecondsPerDay : CivilSeconds{0};
        for (CivilSeconds time = origin + (from - origin + step - 1) / step * step;
             static_cast<double>(time) <= range_.to; time += step) {
            const bool ofDays = step >= kSecondsPerDay;
            const std::string below =
                ofDays ? IsoDate(time).substr(0, 4) : DateText(time, true, date.empty());
            const std::string above =
                ofDays ? DateText(time, true, false) : IsoText(time).substr(11, step < 60 ? 8 : 5);
            const bool isNew = ofDays ? below != date : date.empty() || time == DayOf(time);
            marks_.emplace_back(time,
                                isNew ? std::string(above).append("\\n").append(below) : above);
            date = below;
        }
    }

    void AddMonths() {
        constexpr double month = 30.5 * kSecondsPerDay;
        constexpr double most = 13.0;
        int step = 1;
        for (const int longer : {2, 3, 6, 12, 24, 60, 120, 1200}) {
            step = range_.Length() <= most * step * month ? step : longer;
        }
        const auto last = static_cast<CivilSeconds>(range_.to);
        std::string year;
        for (int number = 12 * std::stoi(IsoDate(static_cast<CivilSeconds>(range_.from)));
             DayBegin(number / 12, number % 12 + 1, 1).value_or(last + 1) <= last; number += step) {
            const CivilSeconds time = *DayBegin(number / 12, number % 12 + 1, 1);
            if (static_cast<double>(time) < range_.from) {
                continue;
            }
            const bool isNew = year != std::to_string(number / 12);
            year = std::to_string(number / 12);
            marks_.emplace_back(time, DateText(time, false, false) + (isNew ? "\\n" + year : ""));
        }
    }

    Range range_;
    std::vector<std::pair<CivilSeconds, std::string>> marks_;
};

/// gnuplot's script of the picture: three panels above one time axis.
class Script {
  public:
    Script(const Options& options, const Records& records)
        : options_(options), records_(records),
          times_(
              Range{static_cast<double>(records.first), static_cast<double>(records.last)}.Widened(
                  0.02, 60.0)),
          axis_(times_) {}

    std::string Text(const std::string& terminal) {
        text_ = terminal;
        text_ += "set encoding utf8\n"
                 "set multiplot\n"
                 "set lmargin at screen 0.095\n"
                 "set rmargin at screen 0.975\n"
                 "set border 3 lc rgb '#404040'\n"
                 "set tics nomirror out scale 0.6 textcolor rgb '#202020'\n"
                 "set grid xtics ytics lt 1 lw 0.5 lc rgb '#dcdcdc'\n"
                 "set pointsize 0.7\n";
        text_ += "set xrange " + times_.Text() + "\n";
        Head();
        Range chlorine = RangeOf(records_, &Record::chlorine);
        const bool fromZero = chlorine.from >= 0.0 && chlorine.from < chlorine.to / 2;
        chlorine = chlorine.Widened(0.06, std::max(std::abs(chlorine.to) * 0.02, 1e-3));
        chlorine.from = fromZero ? 0.0 : chlorine.from;
        Panel({0.465, 0.845, 8, "Chlorine (" + options_.unit + ")", "%.6g", "#1f4e79", true, false},
              &Record::chlorine, chlorine);
        constexpr double leastCounts = 10.0;
        Panel({0.29, 0.405, 4, "Dark (counts)", "%.0f", "#5a5a5a", false, false}, &Record::dark,
              RangeOf(records_, &Record::dark).Widened(0.06, leastCounts));
        Panel({0.115, 0.23, 4, "Reference (counts)", "%.0f", "#8a5a00", false, true},
              &Record::reference, RangeOf(records_, &Record::reference).Widened(0.06, leastCounts));
        return text_ + "unset multiplot\n";
    }

  private:
    struct Look {
        double bottom;
        double top;
        int marks; ///< on its axis, or so
        std::string name;
        const char* format;
        const char* color;
        bool isChlorine;
        bool isLast;
    };

    void Head() {
        const auto count = [](std::uint64_t number, const std::string& one) {
            return std::to_string(number) + " " + one + (number == 1 ? "" : "s");
        };
        std::string days = DateText(records_.first, true, true);
        if (DayOf(records_.first) != DayOf(records_.last)) {
            days += " to " + DateText(records_.last, true, true);
        }
        const std::string title = options_.title.empty() ? "Chlorine, " + days : options_.title;
        const std::string counts = (options_.title.empty() ? "" : days + ": ") +
                                   count(records_.all.size(), "result") + ", " +
                                   count(records_.gaps, "gap") + ", " +
                                   std::to_string(records_.flagged) + " flagged";
        text_ += "set label 1 " + Quoted(title) +
                 " at screen 0.095,0.96 left font ',16' noenhanced\n"
                 "set label 2 " +
                 Quoted(counts) +
                 " at screen 0.095,0.92 left textcolor rgb '#606060'\n"
                 "set label 3 'local time' at screen 0.975,0.035 right textcolor rgb '#606060'\n"
                 "set key at screen 0.975,0.935 right top samplen 1 textcolor rgb '#606060'\n";
    }

    void Panel(const Look& look, FigureOf figure, const Range& range) {
        std::vector<Point> line;
        std::vector<Point> flagged;
        const double edge = range.Length() * 1e-3;
        for (const Record& record : records_.all) {
            const auto time = static_cast<double>(record.time);
            const double value = record.*figure;
            const bool isOff =
                !std::isfinite(value) ||
                (look.isChlorine ? !record.IsOnLine() : std::abs(value) >= kEndOfRange);
            if (record.cycle > records_.longestCycle) {
                line.push_back({time, kNone});
            }
            line.push_back({time, isOff ? kNone : value});
            if (isOff || (look.isChlorine && record.flag != Flag::None)) {
                const double y = std::isnan(value) ? range.from : value;
                flagged.push_back({time, std::clamp(y, range.from + edge, range.to - edge)});
            }
        }
        Data(line, flagged);
        std::array<char, 200> place{};
        std::snprintf(place.data(), place.size(),
                      "set bmargin at screen %.3f\nset tmargin at screen %.3f\n"
                      "set label 4 at screen 0.095,%.3f left textcolor rgb '%s'\n"
                      "set format y '%s'\nset ytics %.6g\n",
                      look.bottom, look.top, look.top + 0.022, look.color, look.format,
                      MarkDistance(range.Length(), look.marks));
        text_ += place.data() + axis_.Command(look.isLast);
        text_ += "set label 4 " + Quoted(look.name) + " noenhanced\n";
        text_ += "set yrange " + range.Text() + "\n";
        const std::string color = std::string(" lc rgb '") + look.color + "' notitle";
        text_ += "plot $line with lines lw 1.3" + color + ", $lone with points pt 7 ps 0.6" + color;
        if (!flagged.empty()) {
            text_ += ", $flagged with points pt 6 ps 1 lw 1.8 lc rgb '#c0392b' ";
            text_ += look.isChlorine ? "title 'flagged record'" : "notitle";
        }
        text_ += "\nunset label 1\nunset label 2\nunset label 3\n";
    }

    void Data(const std::vector<Point>& line, const std::vector<Point>& flagged) {
        constexpr std::size_t stripes = 1500;
        constexpr std::size_t few = 100;
        const auto row = [](const Point& point) {
            std::array<char, 64> text{};
            std::snprintf(text.data(), text.size(), "%.0f %.9g\n", point.x, point.y);
            return std::string(text.data());
        };
        const auto thin = Thinned(line, times_.from, times_.to, stripes);
        const auto isBreak = [&](std::size_t at) {
            return at >= thin.size() || std::isnan(thin[at].y);
        };
        // A datablock of gnuplot is never empty.
        const std::string outside = "0 NaN\n";
        std::string lone = outside;
        text_ += "$line << EOD\n" + outside;
        for (std::size_t at = 0; at < thin.size(); ++at) {
            text_ += isBreak(at) ? "\n" : row(thin[at]);
            if (!isBreak(at) && (line.size() <= few || (isBreak(at - 1) && isBreak(at + 1)))) {
                lone += row(thin[at]);
            }
        }
        text_ += "EOD\n$lone << EOD\n" + lone + "EOD\n$flagged << EOD\n" + outside;
        for (const Point& point : Thinned(flagged, times_.from, times_.to, stripes)) {
            text_ += row(point);
        }
        text_ += "EOD\n";
    }

    const Options& options_;
    const Records& records_;
    Range times_;
    TimeAxis axis_;
    std::string text_;
};

/// gnuplot's command for the kind of file; empty when it is none of ours.
std::string TerminalFor(const std::string& path) {
    const std::string kind = std::filesystem::path(path).extension();
    return kind == ".svg"
               ? "set terminal svg size 1200,780 font 'DejaVu Sans,11' fontscale 1.3 noenhanced "
                 "background '#ffffff'\n"
           : kind == ".png"
               ? "set terminal pngcairo size 1200,780 font 'DejaVu Sans,11' noenhanced\n"
           : kind == ".pdf" ? "set terminal pdfcairo size 27cm,17.55cm font 'DejaVu Sans,11' "
                              "noenhanced\n"
                            : "";
}

} // namespace

int DrawChart(const Options& options) {
    const std::string terminal = TerminalFor(options.output);
    if (terminal.empty()) {
        Complain("--output takes a file that ends in .svg, .png or .pdf, not '" + options.output +
                 "'");
        return kWrongUsage;
    }
    if (!IsPlain(options.title) || !IsPlain(options.unit)) {
        Complain("--title and --unit take one line of UTF-8 text");
        return kWrongUsage;
    }
    const Records records = ReadRecords(options);
    if (records.all.empty()) {
        Complain("no result record to draw");
        return kFound;
    }
    const bool drawn = DrawWithGnuplot(Script(options, records).Text(terminal), options.output);
    return drawn && !Complained() ? kDone : kFound;
}

} // namespace tavrelin::daylog
