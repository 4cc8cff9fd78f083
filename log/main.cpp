// tavrelin-log: reads the days' files that the instrument leaves on its card.

#include "log/Complaint.h"
#include "log/Options.h"
#include "log/Zone.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

namespace {

using namespace tavrelin::daylog;

/// A command with the options that it knows.
class Command {
  public:
    Command(CLI::App& app, Options& options, const std::string& name, const std::string& summary,
            const std::string& details, int (*run)(const Options&))
        : command_(app.add_subcommand(name, summary)), options_(options) {
        command_->footer(details);
        command_->callback([run, &options] { options.run = run; });
    }

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
                "--zone",
                [&options = options_](const std::string& name) {
                    options.zoned = true;
                    if (!SetZone(name)) {
                        throw CLI::ValidationError("--zone",
                                                   "takes a zone that this machine knows, such as "
                                                   "Europe/Berlin, not '" +
                                                       name + "'");
                    }
                },
                "The instrument's time zone (this machine's own); times are shown with their "
                "offset")
            ->type_name("ZONE");
        return *this;
    }
    Command& Time(const std::string& name, std::optional<CivilSeconds>& time,
                  const std::string& help) {
        command_
            ->add_option_function<std::string>(
                name,
                [&time, name](const std::string& text) {
                    time = ParseIsoTime(text);
                    if (!time) {
                        throw CLI::ValidationError(
                            name, "takes a time such as 2026-03-07 or 2026-03-07T09:00:17, not '" +
                                      text + "'");
                    }
                },
                help)
            ->type_name("TIME");
        return *this;
    }
    Command& Text(const std::string& name, std::string& text, const std::string& type,
                  const std::string& help) {
        command_->add_option(name, text, help)->type_name(type);
        return *this;
    }

  private:
    CLI::App* command_;
    Options& options_;
};

void AddCommands(CLI::App& app, Options& options) {
    Command(app, options, "results", "List the result records",
            "Aligned on a terminal, else CSV with a header. Figures are as the log has them: "
            "absorbance,\n"
            "chlorine in the calibration's unit, the three averages in counts. In JSON nan and inf "
            "are\n"
            "null.",
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
        "For each day and in total: measurements, cycle time, chlorine, dark and reference counts "
        "and\n"
        "their drift, gaps (longer than twice the median cycle), records whose figures are not a\n"
        "number, infinite, negative or beyond the detector's range, lines that are torn or "
        "unknown.\n"
        "Each line read is counted once: as a result, a sample, torn or unknown. Status 1 when "
        "there\n"
        "is a gap, such a record or such a line.",
        Summarize)
        .Paths()
        .Span()
        .Zone();
}

int Run(int argc, char** argv) {
    CLI::App app("Reads the days' files that the instrument leaves on its card.");
    app.name("tavrelin-log");
    app.require_subcommand(1);
    app.footer("tavrelin-log COMMAND --help says more about a command.\n"
               "Exit status: 0 done, 1 something is wrong with the data or could not be read or\n"
               "written, 2 wrong usage.");
    Options options;
    AddCommands(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        Complain(std::string(error.what()) + "; see tavrelin-log --help");
        return kWrongUsage;
    }
    std::ios::sync_with_stdio(false);
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
