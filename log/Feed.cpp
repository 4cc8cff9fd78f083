#include "log/Feed.h"

#include "base/NumberText.h"
#include "log/Table.h"

#include <cmath>

namespace tavrelin::daylog {

namespace {

constexpr std::array<std::string_view, 5> kNames = {"absorbance", "chlorine", "dark", "reference",
                                                    "sample"};

std::array<double, 5> All(const Figures& figures) {
    return {figures.absorbance, figures.chlorine, figures.dark, figures.reference, figures.sample};
}

/// A tag's value. The protocol has no way to spell a backslash in it.
std::string TagText(std::string_view text) {
    std::string tag;
    for (const char c : text) {
        if (c == ' ' || c == ',' || c == '=') {
            tag += '\\';
        }
        tag += c == '\\' ? '/' : c;
    }
    return tag;
}

std::string PrometheusNumber(double number) {
    return std::isnan(number)   ? "NaN"
           : std::isinf(number) ? (number > 0 ? "+Inf" : "-Inf")
                                : GeneralText(number);
}

} // namespace

std::string Feed::Json(const Entry& record) {
    std::string line =
        R"({"time":")" + (zoned_ ? IsoText(clock_.At(record.time)) : IsoText(record.time)) + '"';
    if (record.kind == Entry::Kind::Sample) {
        line +=
            ",\"reading\":" + std::to_string(record.reading) + ",\"step\":" + JsonText(record.step);
    } else {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            line +=
                "," + JsonText(kNames[i]) + ":" + JsonNumber(GeneralText(All(record.figures)[i]));
        }
    }
    return line + "}\n";
}

std::string Feed::Influx(const Entry& record) {
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    constexpr std::int64_t latest = INT64_MAX / nanoseconds - 1;
    const std::int64_t utc = clock_.At(record.time).utc;
    std::string line;
    if (record.kind == Entry::Kind::Sample) {
        line = "tavrelin_sample,step=" + TagText(record.step) +
               " reading=" + std::to_string(record.reading) + "i";
    } else {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            if (const double figure = All(record.figures)[i]; std::isfinite(figure)) {
                line += (line.empty() ? "tavrelin_result " : ",") + std::string(kNames[i]) + "=" +
                        GeneralText(figure);
            }
        }
    }
    if (line.empty() || std::abs(utc) > latest) {
        return {};
    }
    Last& last = last_.at(static_cast<std::size_t>(record.kind));
    last = {utc, utc == last.utc ? last.before + 1 : 0};
    return line + " " + std::to_string(utc * nanoseconds + last.before) + "\n";
}

std::string Exposition(const Exposed& exposed) {
    std::string text;
    const auto add = [&](const std::string& name, const std::string& type, const std::string& help,
                         const std::string& value) {
        text += "# HELP tavrelin_" + name + " " + help + "\n# TYPE tavrelin_" + name + " " + type +
                "\ntavrelin_" + name + " " + value + "\n";
    };
    if (exposed.utc) {
        const Figures& figures = exposed.figures;
        const auto gauge = [&](const std::string& name, const std::string& help, double value) {
            add(name, "gauge", help + " of the latest result.", PrometheusNumber(value));
        };
        gauge("chlorine", "Chlorine, in the unit of the calibration,", figures.chlorine);
        gauge("absorbance", "Absorbance", figures.absorbance);
        gauge("dark_counts", "Mean detector counts without light", figures.dark);
        gauge("reference_counts", "Mean detector counts before the reagent", figures.reference);
        gauge("sample_counts", "Mean detector counts after the reaction", figures.sample);
        add("result_time_seconds", "gauge", "Unix time of the latest result.",
            std::to_string(*exposed.utc));
    }
    add("results_total", "counter", "Results since the start.", std::to_string(exposed.results));
    add("samples_total", "counter", "Detector readings since the start.",
        std::to_string(exposed.samples));
    add("broken_lines_total", "counter", "Lines that are torn or unknown since the start.",
        std::to_string(exposed.broken));
    return text;
}

} // namespace tavrelin::daylog
