#include "base/NumberText.h"
#include "log/Complaint.h"
#include "log/Flag.h"
#include "log/Options.h"
#include "log/Source.h"
#include "log/Statistics.h"
#include "log/Table.h"
#include "log/Zone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <map>
#include <optional>

namespace tavrelin::daylog {

namespace {

/// Lines of text of which the first are shown and all are counted.
class Findings {
  public:
    void Add(const std::string& line) {
        constexpr std::uint64_t shown = 20;
        if (++count_ <= shown) {
            text_ += "  " + line + "\n";
        }
    }
    [[nodiscard]] std::uint64_t Count() const { return count_; }
    /// Nothing when there are none.
    [[nodiscard]] std::string Text(const std::string& title) const {
        const auto shown = static_cast<std::uint64_t>(std::count(text_.begin(), text_.end(), '\n'));
        return count_ == 0
                   ? ""
                   : title + "\n" + text_ +
                         (count_ > shown ? "  and " + std::to_string(count_ - shown) + " more\n"
                                         : "");
    }

  private:
    std::uint64_t count_ = 0;
    std::string text_;
};

/// What is told of a day and of all days.
struct Period {
    std::uint64_t results = 0;
    std::uint64_t samples = 0;
    Cycles cycles;
    Spread chlorine;
    Spread dark;
    Spread reference;
    std::array<std::uint64_t, 5> flagged{}; ///< by Flag
};

std::string Counted(std::uint64_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

class Report {
  public:
    explicit Report(const Options& options) : options_(options) {
        all_.cycles = Cycles(Cycles::kMany);
    }

    void Take(const Entry& entry, const std::string& file) {
        if (!entry.recovered) {
            ++lines_.at(static_cast<std::size_t>(entry.kind));
        } else {
            ++recovered_;
        }
        if (!entry.IsRecord()) {
            broken_.Add(file + ":" + std::to_string(entry.line) +
                        (entry.kind == Entry::Kind::Torn ? ": torn: " : ": unknown: ") +
                        Shown(entry.text));
        } else if (!options_.Selects(entry.time)) {
            ++unselected_;
        } else if (entry.kind == Entry::Kind::Sample) {
            ++DayAt(entry.time).samples;
            ++all_.samples;
        } else {
            TakeResult(entry, file + ":" + std::to_string(entry.line));
        }
    }

    void Print() const;

    [[nodiscard]] bool FoundSomething() const {
        return broken_.Count() + flagged_.Count() > 0 ||
               (!all_.cycles.Empty() && all_.cycles.CountAbove(2 * all_.cycles.Median()) > 0);
    }

  private:
    Period& DayAt(CivilSeconds time) {
        if (day_ == nullptr || time < dayBegin_ || time >= dayBegin_ + kSecondsPerDay) {
            dayBegin_ = DayOf(time);
            day_ = &days_[dayBegin_];
        }
        return *day_;
    }
    void TakeResult(const Entry& entry, const std::string& place);
    void TakeCycle(CivilSeconds time, Period& day, const std::string& place);
    void PrintPeriod(const Period& period, bool whole) const;
    void PrintGaps() const;

    const Options& options_;
    std::array<std::uint64_t, 4> lines_{}; ///< by Entry::Kind
    std::uint64_t recovered_ = 0;
    std::uint64_t unselected_ = 0;
    Period all_;
    std::map<CivilSeconds, Period> days_;
    Period* day_ = nullptr;
    CivilSeconds dayBegin_ = 0;
    Trend darkTrend_;
    Trend referenceTrend_;
    ZonedClock clock_;
    std::optional<Moment> last_;
    std::optional<CivilSeconds> first_;
    CivilSeconds doubledDay_ = -1;
    Findings flagged_;
    Findings clockFindings_;
    Findings broken_;
};

void Report::TakeResult(const Entry& entry, const std::string& place) {
    Period& day = DayAt(entry.time);
    const Figures& figures = entry.figures;
    const Flag flag = FlagOf(figures);
    if (flag != Flag::None) {
        flagged_.Add(place + ": " + IsoText(entry.time) + ": " + FlagText(flag));
    }
    first_ = first_.value_or(entry.time);
    const double days = static_cast<double>(entry.time - *first_) / kSecondsPerDay;
    if (std::isfinite(figures.dark)) {
        darkTrend_.Add(days, figures.dark);
    }
    if (std::isfinite(figures.reference)) {
        referenceTrend_.Add(days, figures.reference);
    }
    TakeCycle(entry.time, day, place);
    for (Period* period : {&day, &all_}) {
        ++period->results;
        ++period->flagged.at(static_cast<std::size_t>(flag));
        const std::array figuresOf{std::pair{&period->chlorine, figures.chlorine},
                                   std::pair{&period->dark, figures.dark},
                                   std::pair{&period->reference, figures.reference}};
        for (const auto& [spread, figure] : figuresOf) {
            if (std::isfinite(figure)) {
                spread->Add(figure);
            }
        }
    }
}

void Report::TakeCycle(CivilSeconds time, Period& day, const std::string& place) {
    const Moment moment = clock_.At(time);
    if (moment.doubled && doubledDay_ != DayOf(time)) {
        doubledDay_ = DayOf(time);
        clockFindings_.Add(IsoDate(time) + ": an hour comes twice; the order of the records tells "
                                           "which is which");
    }
    if (last_ && moment.utc < last_->utc) {
        clockFindings_.Add(
            place + ": time goes back by " +
            Counted(static_cast<std::uint64_t>(last_->utc - moment.utc), "second", "seconds"));
    } else if (last_) {
        const std::int64_t span = moment.utc - last_->utc;
        for (Period* period : {&day, &all_}) {
            period->cycles.Add({span, last_->utc + last_->offset, time});
        }
    }
    last_ = moment;
}

void Report::PrintPeriod(const Period& period, bool whole) const {
    std::string text = Counted(period.results, "measurement", "measurements") + ", " +
                       Counted(period.samples, "sample", "samples") + "\n";
    if (!period.cycles.Empty()) {
        text += "  cycle      median " + std::to_string(period.cycles.Median()) + " s, longest " +
                std::to_string(period.cycles.Longest()) + " s, " +
                Counted(period.cycles.CountAbove(2 * all_.cycles.Median()), "gap", "gaps") + "\n";
    }
    if (const Spread& chlorine = period.chlorine; chlorine.Count() > 0) {
        text += "  chlorine   mean " + GeneralText(chlorine.Mean()) + ", min " +
                GeneralText(chlorine.Least()) + ", max " + GeneralText(chlorine.Most()) +
                ", standard deviation " + GeneralText(chlorine.StandardDeviation()) + "\n";
    }
    const auto counts = [&](const char* name, const Spread& spread, const Trend& trend) {
        if (spread.Count() > 0) {
            text += name + std::string("mean ") + GeneralText(spread.Mean()) + ", min " +
                    GeneralText(spread.Least()) + ", max " + GeneralText(spread.Most());
            text += whole ? ", drift " + GeneralText(trend.Slope()) + " counts a day\n" : "\n";
        }
    };
    counts("  dark       ", period.dark, darkTrend_);
    counts("  reference  ", period.reference, referenceTrend_);
    std::string flagged;
    for (std::size_t flag = 1; flag < period.flagged.size(); ++flag) {
        if (period.flagged.at(flag) > 0) {
            flagged += (flagged.empty() ? "" : ", ") + std::to_string(period.flagged.at(flag)) +
                       " " + FlagText(static_cast<Flag>(flag));
        }
    }
    std::cout << text << (flagged.empty() ? "" : "  flagged    " + flagged + "\n");
}

void Report::PrintGaps() const {
    if (all_.cycles.Empty()) {
        return;
    }
    const std::int64_t limit = 2 * all_.cycles.Median();
    const std::uint64_t count = all_.cycles.CountAbove(limit);
    const auto gaps = all_.cycles.Above(limit);
    if (count > 0) {
        std::cout << "gaps longer than " << limit << " s\n";
    }
    for (const Cycles::Span& gap : gaps) {
        std::cout << "  " << IsoText(gap.begin) << " to " << IsoText(gap.end) << ", " << gap.seconds
                  << " s\n";
    }
    if (count > gaps.size()) {
        std::cout << "  and " << count - gaps.size() << " shorter ones\n";
    }
}

void Report::Print() const {
    for (const auto& [begin, day] : days_) {
        std::cout << IsoDate(begin) << ": ";
        PrintPeriod(day, false);
    }
    std::cout << "in all: ";
    PrintPeriod(all_, true);
    PrintGaps();
    std::cout << flagged_.Text("flagged records") << clockFindings_.Text("clock");
    const auto count = [this](Entry::Kind kind) {
        return lines_.at(static_cast<std::size_t>(kind));
    };
    const std::uint64_t all = lines_[0] + lines_[1] + lines_[2] + lines_[3];
    std::cout << "lines: " << all
              << " read: " << Counted(count(Entry::Kind::Result), "result", "results") << ", "
              << Counted(count(Entry::Kind::Sample), "sample", "samples") << ", "
              << count(Entry::Kind::Torn) << " torn, " << count(Entry::Kind::Unknown) << " unknown";
    if (recovered_ > 0) {
        std::cout << "; " << Counted(recovered_, "record", "records")
                  << " put together from torn lines";
    }
    if (unselected_ > 0) {
        std::cout << "; " << Counted(unselected_, "record", "records")
                  << " outside --from and --to";
    }
    std::cout << "\n" << broken_.Text("lines that are no record");
}

} // namespace

int Summarize(const Options& options) {
    Report report(options);
    ReadSources(FindSources(options.paths),
                [&](const Entry& entry, const std::string& file) { report.Take(entry, file); });
    report.Print();
    return FlushOutput() && !Complained() && !report.FoundSomething() ? kDone : kFound;
}

} // namespace tavrelin::daylog
