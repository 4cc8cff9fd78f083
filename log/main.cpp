// tavrelin-log: reads the days' files that the instrument leaves on its card.

#include "base/NumberText.h"
#include "log/Complaint.h"
#include "log/Options.h"
#include "log/Zone.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <iostream>

namespace {

using namespace tavrelin::daylog;
using tavrelin::GeneralText;

/// A command with the options that it knows.
class Command {
  public:
    Command(CLI::App& app, Options& options, const std::string& name, const std::string& summary,
            const std::string& details, int (*run)(const Options&))
        : command_(app.add_subcommand(name, summary)), options_(options) {
        command_->footer(details);
        command_->callback([run, &options] { options.run = run; });
    }

    /// For options that no other command has.
    [[nodiscard]] CLI::App& Own() const { return *command_; }
    Command&
    Paths(const std::string& help = "Days' files, folders of them, databases that import made") {
        command_->add_option("PATH", options_.paths, help)->required()->type_name("");
        return *this;
    }
    Command& Json() {
        command_->add_flag("--json", options_.json, "One JSON object a line");
        return *this;
    }
    Command& Span() {
        Time("--from", options_.from, "Only records of this local time or later");
        Time("--to", options_.to, "Only records before this local time");
        return *this;
    }
    Command& Zone() {
        command_
            ->add_option_function<std::string>(
                "--zone", [&options = options_](const std::string&) { options.zoned = true; },
                "The instrument's time zone (this machine's own); times are shown with their "
                "offset")
            ->check([](const std::string& name) {
                return SetZone(name) ? ""
                                     : "takes a zone that this machine knows, such as "
                                       "Europe/Berlin, not '" +
                                           name + "'";
            })
            ->type_name("ZONE");
        return *this;
    }
    Command& Time(const std::string& name, std::optional<CivilSeconds>& time,
                  const std::string& help) {
        command_
            ->add_option_function<std::string>(
                name, [&time](const std::string& text) { time = ParseIsoTime(text); }, help)
            ->check([](const std::string& text) {
                return ParseIsoTime(text) ? ""
                                          : "takes a time such as 2026-03-07 or "
                                            "2026-03-07T09:00:17, not '" +
                                                text + "'";
            })
            ->type_name("TIME");
        return *this;
    }
    Command& Text(const std::string& name, std::string& text, const std::string& type,
                  const std::string& help, bool required = false) {
        command_->add_option(name, text, help)->type_name(type)->required(required);
        return *this;
    }
    Command& Number(const std::string& name, double& number, double least, double most,
                    const std::string& type, const std::string& help) {
        command_
            ->add_option_function<double>(
                name,
                [&number, least, most, name](double value) {
                    if (!(value >= least && value <= most)) { // nan is refused, too
                        throw CLI::ValidationError(name, "takes a number from " +
                                                             GeneralText(least) + " to " +
                                                             GeneralText(most));
                    }
                    number = value;
                },
                help)
            ->type_name(type);
        return *this;
    }
    Command& Scale() {
        return Number("--scale", options_.scale, 1e-9, 1e9, "FACTOR",
                      "Chlorine of the log times this is in the unit wanted (1)");
    }

  private:
    CLI::App* command_;
    Options& options_;
};

void AddListing(CLI::App& app, Options& options) {
    Command(
        app, options, "results", "List the result records",
        R"(Aligned on a terminal, else CSV with a header. Figures are as the log has them: absorbance,
chlorine in the calibration's unit, the three averages in counts. In JSON nan and inf are
null.)",
        ListResults)
        .Paths()
        .Json()
        .Span()
        .Zone();
    Command(app, options, "samples", "List the detector's readings",
            "Readings in counts, each with the step that it was taken in.", ListSamples)
        .Paths()
        .Json()
        .Span()
        .Text("--step", options.step, "TEXT", "Only of steps with this text in their description")
        .Time("--measurement", options.measurement,
              "Only of the measurement whose result has this time")
        .Zone();
    Command(
        app, options, "summary", "Tell what the days were like, and what is wrong with them",
        R"(For each day and in total: measurements, cycle time, chlorine, dark and reference counts and
their drift, gaps (longer than twice the median cycle), records whose figures are not a
number, infinite, negative or beyond the detector's range, lines that are torn or unknown.
Each line read is counted once: as a result, a sample, torn or unknown. Status 1 when there
is a gap, such a record or such a line.)",
        Summarize)
        .Paths()
        .Span()
        .Zone();
}

void AddComparing(CLI::App& app, Options& options) {
    Command(
        app, options, "import", "Keep days' files in an SQLite database",
        R"(Makes DATABASE where there is none. Each file is taken in whole or not at all. One that is
there already is passed over when size and modification time are the same, taken in anew when
it has grown or changed, and refused when it is shorter or begins otherwise: another instrument's.
All other commands read the database as they read the files; docs/day-files.md has its tables.
Status 1 when a file was refused or could not be read or written.)",
        ImportFiles)
        .Text("DATABASE", options.database, "", "The database to write", true)
        .Paths("Days' files or folders of them");
    Command(
        app, options, "verify", "Compare with grab samples",
        R"(For each grab sample the nearest result: difference, percent of the grab sample's value, and
whether that is within 15 percent or 0.1 mg/L, whichever is greater (the criterion of EPA
Method 334.0 for on-line chlorine analysers); exactly on the limit is within. GRAB.csv has a
line for each: local time (2026-03-07T09:00, or as the log spells it), comma, value in mg/L;
a header and further columns may be there. Results whose chlorine is not a finite number are
passed over. Status 1 when one is out, has no result or could not be read.)",
        VerifyResults)
        .Text("--grab", options.grab, "GRAB.csv", "The grab samples", true)
        .Paths()
        .Scale()
        .Number("--within", options.withinMinutes, 0, 1e6, "MINUTES",
                "Longest time between grab sample and result (15)")
        .Number("--tolerance", options.tolerancePercent, 0, 1e6, "PERCENT",
                "Tolerance in percent of the grab sample (15)")
        .Number("--absolute", options.tolerance, 0, 1e9, "VALUE",
                "Least tolerance, in the grab sample's unit (0.1)")
        .Json();
    Command(
        app, options, "chart", "Draw chlorine, dark and reference counts over time",
        R"(The file's name ends in .svg, .png or .pdf. Lines are broken where results are missing for
longer than twice the median cycle. Flagged records (see summary) are marked; one that cannot
be drawn where it belongs stands at the edge. Where there are more records than the picture can
show, least and greatest of each stretch are drawn, so that no peak is lost. gnuplot draws it
(Debian's gnuplot-nox). Status 1 when there is no record or no picture.)",
        DrawChart)
        .Text("--output,-o", options.output, "FILE", "The picture to write", true)
        .Paths()
        .Text("--title", options.title, "TEXT", "Its title (the days that it shows)")
        .Text("--unit", options.unit, "TEXT", "Unit of chlorine on the axis (as calibrated)")
        .Scale()
        .Span()
        .Zone();
}

void AddFollow(CLI::App& app, Options& options) {
    Command command(
        app, options, "follow", "Print new records as they come",
        R"(Waits for records in the day's files of FOLDER and prints each at once: results, with
--samples the detector's readings, too. What FOLDER holds at the start is old, but for
--from. FOLDER need not be there yet, and no file of it is held open: its card may be
unmounted, pulled and put back, the day may end; no record comes twice. On a card that
is new, what its last file holds is new, too. A file that was cut back (by 16 KB at most;
docs/day-files.md) goes on with its first new line, one with another content begins anew.
  json        one object a line, as results --json and samples --json have it
  influx      InfluxDB's line protocol: tavrelin_result with the fields absorbance,
              chlorine, dark, reference, sample; tavrelin_sample with the tag step and
              the integer field reading. Times are nanoseconds in UTC, made of the log's
              local times; each further record of a second is a nanosecond later. Fields
              that are nan or inf are left out, and in a step / stands for a backslash
  prometheus  the latest result as gauges, and counters of results, samples and broken
              lines since the start; FILE holds nothing else and is written anew at one
              stroke (by way of FILE.new), as node-exporter's textfile collector wants it
Lines that are torn or unknown are named on standard error. While FILE cannot be written,
which is told once, records are lost to it. Status 0 at INT and TERM; 1 when nobody reads
the output any more, or FOLDER cannot be watched.)",
        Follow);
    command.Own().add_option("FOLDER", options.folder, "Of the day's files")->capture_default_str();
    command.Own()
        .add_option("--format", options.format, "How to spell them")
        ->check(CLI::IsMember({"json", "influx", "prometheus"}))
        ->capture_default_str();
    command.Text("--output", options.output, "FILE", "Append to FILE instead of standard output");
    command.Own().add_flag("--samples", options.samples, "Readings as well as results");
    command.Time("--from", options.from, "Begin with the records of this local time or later")
        .Zone();
}

int Run(int argc, char** argv) {
    CLI::App app("Reads the days' files that the instrument leaves on its card.");
    app.name("tavrelin-log");
    app.require_subcommand(1);
    app.footer(R"(tavrelin-log COMMAND --help says more about a command.
Exit status: 0 done, 1 something is wrong with the data or could not be read or
written, 2 wrong usage.)");
    Options options;
    AddListing(app, options);
    AddComparing(app, options);
    AddFollow(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        Complain(std::string(error.what()) + "; see tavrelin-log --help");
        return kWrongUsage;
    }
    std::ios::sync_with_stdio(false);
    std::signal(SIGXFSZ, SIG_IGN); // a limit of file sizes is told as a full disk is
    return options.run(options);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (...) {
        std::fputs("tavrelin-log: out of memory\n", stderr);
        return kFound;
    }
}
