#include "simulator/run/RunRequest.h"

#include <charconv>
#include <cstdio>
#include <map>

namespace sim {
namespace {

using Fields = std::map<std::string, std::string, std::less<>>;

Fields Split(std::string_view text) {
    Fields fields;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos) {
            fields[std::string(line.substr(0, equals))] = line.substr(equals + 1);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return fields;
}

template <typename Number>
std::optional<Number> NumberOf(const Fields& fields, std::string_view key) {
    const auto found = fields.find(key);
    if (found == fields.end()) {
        return std::nullopt;
    }
    Number value{};
    const std::string& text = found->second;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc{} ? std::optional<Number>{value} : std::nullopt;
}

std::string TextOf(const Fields& fields, std::string_view key) {
    const auto found = fields.find(key);
    return found == fields.end() ? std::string() : found->second;
}

} // namespace

std::string Encode(const RunRequest& request) {
    const RunOptions& options = request.options;
    std::string text;
    const auto add = [&text](const char* key, const std::string& value) {
        text += std::string(key) + "=" + value + "\n";
    };
    add("program", request.program);
    add("report", std::to_string(request.reportDescriptor));
    add("scenario", request.scenarioFile);
    add("seed", std::to_string(options.seed));
    add("start", std::to_string(options.startTime));
    add("root", options.root);
    add("events", options.eventsFile);
    add("costs", options.ioCosts ? "1" : "0");
    char pace[32];
    std::snprintf(pace, sizeof pace, "%.17g", options.pace);
    add("pace", pace);
    if (options.limits.measurements) {
        add("measurements", std::to_string(*options.limits.measurements));
    }
    if (options.limits.steps) {
        add("steps", std::to_string(*options.limits.steps));
    }
    add("board-time", std::to_string(options.limits.boardTime));
    return text;
}

std::optional<RunRequest> DecodeRunRequest(std::string_view text) {
    const Fields fields = Split(text);
    const auto report = NumberOf<int>(fields, "report");
    const auto seed = NumberOf<std::uint64_t>(fields, "seed");
    const auto start = NumberOf<std::int64_t>(fields, "start");
    const auto pace = NumberOf<double>(fields, "pace");
    const auto boardTime = NumberOf<Nanoseconds>(fields, "board-time");
    if (!report || !seed || !start || !pace || !boardTime) {
        return std::nullopt;
    }
    RunRequest request;
    request.program = TextOf(fields, "program");
    request.reportDescriptor = *report;
    request.scenarioFile = TextOf(fields, "scenario");
    request.options.seed = *seed;
    request.options.startTime = *start;
    request.options.root = TextOf(fields, "root");
    request.options.eventsFile = TextOf(fields, "events");
    request.options.ioCosts = TextOf(fields, "costs") == "1";
    request.options.pace = *pace;
    request.options.limits.measurements = NumberOf<std::uint64_t>(fields, "measurements");
    request.options.limits.steps = NumberOf<std::uint64_t>(fields, "steps");
    request.options.limits.boardTime = *boardTime;
    return request;
}

} // namespace sim
