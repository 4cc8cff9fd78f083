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
    constexpr std::string_view around = " \t\r\"";
    const std::size_t comma = std::min(line.find(','), line.size());
    std::string_view cell = line.substr(0, comma);
    line.remove_prefix(std::min(comma + 1, line.size()));
    cell.remove_prefix(std::min(cell.find_first_not_of(around), cell.size()));
    return cell.substr(0, cell.find_last_not_of(around) + 1);
}

/// An ISO time, or one as the log spells it: 2026-03-07 09:00.17, 2026-03-07 09:0:16.
std::optional<CivilSeconds> ParseTime(std::string_view text) {
    constexpr std::size_t date = 11; // with what separates it from the time of day
    std::string padded(text.substr(0, date));
    std::string_view rest = text.substr(padded.size());
    while (padded.size() >= date && !rest.empty()) {
        const std::size_t digits = std::min(rest.find_first_of(":."), rest.size());
        padded += std::string(digits < 2 ? 2 - digits : 0, '0');
        padded += rest.substr(0, digits);
        rest.remove_prefix(digits);
        if (!rest.empty()) {
            padded += ':';
            rest.remove_prefix(1);
        }
    }
    return ParseIsoTime(padded);
}

bool ParseValue(std::string_view text, double& value) {
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && rest == text.data() + text.size() && std::isfinite(value) &&
           value >= 0.0;
}

/// The grab samples of a file by their times, with what lines of it are none told by Complain.
class GrabFile {
  public:
    explicit GrabFile(std::string path) : path_(std::move(path)) {}

    std::vector<Grab> Read() {
        std::string rest;
        ReadFile(path_, [&](std::string_view bytes) {
            for (const char c : bytes) {
                if (c == '\n') {
                    TakeLine(rest);
                    rest.clear();
                } else if (rest.size() < kLongest) {
                    rest += c;
                }
            }
        });
        if (!rest.empty()) {
            TakeLine(rest);
        }
        if (bad_ > kTold) {
            Complain(path_ + ": and " + std::to_string(bad_ - kTold) + " more such lines");
        }
        if (grabs_.empty()) {
            Complain(path_ + ": no grab sample in it");
        }
        std::stable_sort(grabs_.begin(), grabs_.end(),
                         [](const Grab& a, const Grab& b) { return a.time < b.time; });
        return std::move(grabs_);
    }

  private:
    static constexpr std::uint64_t kTold = 20;
    static constexpr std::size_t kLongest = 8192;

    void TakeLine(std::string_view line) {
        constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
        if (++number_ == 1 && line.substr(0, byteOrderMark.size()) == byteOrderMark) {
            line.remove_prefix(byteOrderMark.size());
        }
        std::string_view cells = line;
        const std::string_view time = TakeCell(cells);
        const auto parsed = ParseTime(time);
        Grab grab;
        if (parsed && ParseValue(TakeCell(cells), grab.value)) {
            grab.time = *parsed;
            grabs_.push_back(grab);
            return;
        }
        const bool isHeader = number_ == 1 && !time.empty() &&
                              (std::isalpha(static_cast<unsigned char>(time[0])) != 0);
        const bool isBlank = time.empty() && cells.empty();
        if (!isHeader && !isBlank && ++bad_ <= kTold) {
            Complain(path_ + ":" + std::to_string(number_) +
                     ": not a time and a value, such as 2026-03-07T09:00,0.85: " + Shown(line));
        }
    }

    std::string path_;
    std::vector<Grab> grabs_;
    std::uint64_t number_ = 0;
    std::uint64_t bad_ = 0;
};

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

} // namespace

int VerifyResults(const Options& options) {
    std::vector<Grab> grabs = GrabFile(options.grab).Read();
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
        const double difference = grab.result - grab.value;
        const double limit =
            std::max(grab.value * options.tolerancePercent / 100, options.tolerance);
        // Decimal fractions: what is on the limit must not fail by its last binary digit.
        const double rounding = 1e-12 * std::max(grab.value, std::abs(grab.result));
        const bool passes = grab.found && std::abs(difference) <= limit + rounding;
        allWithin = allWithin && passes;
        std::vector<std::string> cells{
            IsoText(grab.time), GeneralText(grab.value), "", "", "", "", GeneralText(limit),
            "no result"};
        if (grab.found) {
            cells[2] = IsoText(grab.resultTime);
            cells[3] = GeneralText(grab.result);
            cells[4] = GeneralText(difference);
            cells[5] = grab.value > 0.0 ? GeneralText(difference / grab.value * 100) : "";
            cells[7] = passes ? "within" : "out";
        }
        table.Add(std::move(cells));
    }
    return table.Finish() && allWithin && !Complained() ? kDone : kFound;
}

} // namespace tavrelin::daylog
