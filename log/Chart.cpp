#include "log/ChartData.h"
#include "log/Complaint.h"
#include "log/Gnuplot.h"
#include "log/Table.h"

#include <cstdio>
#include <filesystem>

namespace tavrelin::daylog {

namespace {

/// One above the other; heights in parts of the picture's.
struct Panel {
    std::size_t figure;
    double bottom;
    double top;
    const char* name;
    const char* color;
    const char* numbers; ///< format of those on its axis
    bool isLow;
};

constexpr std::array kPanels{
    Panel{ChartData::kChlorine, 0.465, 0.845, "Chlorine", "#1f4e79", "%.6g", false},
    Panel{ChartData::kDark, 0.29, 0.405, "Dark (counts)", "#5a5a5a", "%.0f", true},
    Panel{ChartData::kReference, 0.115, 0.23, "Reference (counts)", "#8a5a00", "%.0f", true}};

constexpr const char* kLook = R"(set encoding utf8
set locale 'C'
set multiplot
set lmargin at screen 0.095
set rmargin at screen 0.97
set border 3 lc rgb '#404040'
set tics nomirror out scale 0.6 textcolor rgb '#202020'
set xtics time
set grid xtics ytics lt 1 lw 0.5 lc rgb '#dcdcdc'
set label 3 'local time' at screen 0.97,0.035 right textcolor rgb '#606060'
set key at screen 0.97,0.935 right top samplen 1 textcolor rgb '#606060'
)";

/// printf into a string.
template <typename... Values>
std::string Printed(const char* format, Values... values) {
    std::array<char, 1000> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

/// A text that gnuplot takes as it stands.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("''") : std::string(1, c);
    }
    return quoted + "'";
}

/// gnuplot's command for the kind of file; empty when it is none of ours.
std::string TerminalFor(const std::string& path) {
    const std::string kind = std::filesystem::path(path).extension();
    const std::string font = " font 'DejaVu Sans,11' noenhanced ";
    return kind == ".svg"
               ? "set terminal svg size 1200,780 fontscale 1.3 background '#ffffff'" + font + "\n"
           : kind == ".png" ? "set terminal pngcairo size 1200,780" + font + "\n"
           : kind == ".pdf" ? "set terminal pdfcairo size 27cm,17.55cm" + font + "\n"
                            : "";
}

/// How the marks of a time axis of so many seconds are spelled.
const char* TimeFormat(double seconds) {
    return seconds < 240                    ? "%H:%M:%S"
           : seconds < 1.5 * kSecondsPerDay ? "%H:%M"
           : seconds < 5 * kSecondsPerDay   ? "%H:%M\\n%d %b"
           : seconds < 150 * kSecondsPerDay ? "%d %b\\n%Y"
                                            : "%b\\n%Y";
}

/// A distance of marks on the axis of a low panel, so that there are four or so.
double MarkDistance(double length) {
    const double power = std::pow(10.0, std::floor(std::log10(length / 4)));
    const double part = length / 4 / power;
    return power * (part <= 1.0 ? 1.0 : part <= 2.0 ? 2.0 : part <= 5.0 ? 5.0 : 10.0);
}

/// The title, and a line about what is shown.
std::string Head(const Options& options, const ChartData& data) {
    const std::string first = IsoDate(static_cast<CivilSeconds>(data.times.from));
    const std::string last = IsoDate(static_cast<CivilSeconds>(data.times.to));
    const std::string days = first + (first == last ? "" : " to " + last);
    const auto count = [](std::uint64_t number, const std::string& one) {
        return std::to_string(number) + " " + one + (number == 1 ? "" : "s");
    };
    return "set label 1 " + Quoted(options.title.empty() ? "Chlorine, " + days : options.title) +
           " at screen 0.095,0.96 left font ',16' noenhanced\n"
           "set label 2 " +
           Quoted((options.title.empty() ? "" : days + ": ") +
                  count(data.records.size(), "result") + ", " + count(data.gaps, "gap") + ", " +
                  std::to_string(data.flagged) + " flagged") +
           " at screen 0.095,0.92 left textcolor rgb '#606060'\n";
}

/// Where a panel stands, its name and its axes.
std::string FrameText(const Panel& panel, const std::string& name, const Range& times,
                      const Range& range) {
    const bool isLast = panel.figure == ChartData::kReference;
    return Printed("set bmargin at screen %.3f\nset tmargin at screen %.3f\n"
                   "set format x \"%s\"\nset format y '%s'\nset yrange [%.12g:%.12g]\n",
                   panel.bottom, panel.top, isLast ? TimeFormat(times.Length()) : "", panel.numbers,
                   range.from, range.to) +
           (panel.isLow ? Printed("set ytics %g\n", MarkDistance(range.Length())) : "") +
           "set label 4 " + Quoted(name) +
           Printed(" at screen 0.095,%.3f left textcolor rgb '%s' noenhanced\n", panel.top + 0.022,
                   panel.color);
}

std::string PanelText(const Panel& panel, const ChartData& data, const Range& times,
                      const std::string& unit) {
    const PanelData rows = PanelDataOf(data, panel.figure, times);
    const bool areFew = data.records.size() <= 100;
    // A datablock of gnuplot is never empty. Points as thick as the line are for a record alone
    // between two gaps.
    return "$line << EOD\n0 NaN\n" + rows.line + "EOD\n$flagged << EOD\n0 NaN\n" + rows.flagged +
           "EOD\n" +
           FrameText(panel, panel.name + (panel.isLow ? "" : " (" + unit + ")"), times,
                     rows.range) +
           Printed("plot $line with linespoints lw 1.3 pt 7 ps %g lc rgb '%s' notitle",
                   areFew ? 0.6 : 0.15, panel.color) +
           ", $flagged with points pt 6 ps 1 lw 1.8 lc rgb '#c0392b' " +
           (panel.isLow || data.flagged == 0 ? "notitle" : "title 'flagged record'") +
           "\nunset label\n";
}

std::string ScriptFor(const Options& options, const ChartData& data) {
    const Range times = data.times.Widened(0.02, 60.0);
    std::string text = TerminalFor(options.output) + kLook +
                       Printed("set xrange [%.12g:%.12g]\n", times.from, times.to) +
                       Head(options, data);
    for (const Panel& panel : kPanels) {
        text += PanelText(panel, data, times, options.unit);
    }
    return text + "unset multiplot\n";
}

} // namespace

int DrawChart(const Options& options) {
    if (TerminalFor(options.output).empty()) {
        Complain("--output takes a file that ends in .svg, .png or .pdf, not '" + options.output +
                 "'");
        return kWrongUsage;
    }
    if (!IsPlain(options.title) || !IsPlain(options.unit)) {
        Complain("--title and --unit take one line of UTF-8 text");
        return kWrongUsage;
    }
    const ChartData data = ReadChartData(options);
    if (data.records.empty()) {
        Complain("no result record to draw");
        return kFound;
    }
    const bool drawn = DrawWithGnuplot(ScriptFor(options, data), options.output);
    return drawn && !Complained() ? kDone : kFound;
}

} // namespace tavrelin::daylog
