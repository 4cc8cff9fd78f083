#include "simulator/run/RunRequest.h"

#include <map>
#include <sstream>

namespace sim {
namespace {

/// Everything that a request holds, in one order for writing and reading.
template <typename Request, typename Visit>
void EachField(Request& request, Visit visit) {
    auto& options = request.options;
    visit("program", request.program);
    visit("report", request.reportDescriptor);
    visit("library", request.libraryDescriptor);
    visit("live", request.liveDescriptor);
    visit("scenario", request.scenarioFile);
    visit("seed", options.seed);
    visit("start", options.startTime);
    visit("root", options.root);
    visit("events", options.eventsFile);
    visit("every-call", options.everyCall);
    visit("vcd", options.vcdFile);
    visit("board", options.boardFile);
    visit("world", options.keepWorld);
    visit("costs", options.ioCosts);
    visit("pace", options.pace);
    visit("measurements", options.limits.measurements);
    visit("steps", options.limits.steps);
    visit("calls", options.limits.calls);
    visit("board-time", options.limits.boardTime);
    visit("stall", options.limits.stall);
}

void Write(std::ostream& out, const char* key, const std::optional<std::uint64_t>& value) {
    if (value) {
        out << key << "=" << *value << "\n";
    }
}

void Write(std::ostream& out, const char* key, const std::string& value) {
    out << key << "=";
    for (const char character : value) {
        out << (character == '\n' || character == '\\' ? "\\" : "")
            << (character == '\n' ? 'n' : character);
    }
    out << "\n";
}

template <typename Value>
void Write(std::ostream& out, const char* key, const Value& value) {
    out << key << "=" << value << "\n";
}

/// The text of a field, or null. Each reader tells whether it found what it must.
bool Read(const std::string* text, std::string& value) {
    value.clear();
    for (std::size_t at = 0; text != nullptr && at < text->size(); ++at) {
        const bool escaped = (*text)[at] == '\\' && ++at < text->size();
        value += escaped && (*text)[at] == 'n' ? '\n' : (*text)[at];
    }
    return true;
}

template <typename Number>
bool Read(const std::string* text, Number& value) {
    return text != nullptr && std::istringstream(*text) >> value;
}

bool Read(const std::string* text, std::optional<std::uint64_t>& value) {
    return text == nullptr || Read(text, value.emplace());
}

} // namespace

std::string Encode(const RunRequest& request) {
    std::ostringstream text;
    text.precision(17);
    EachField(request, [&](const char* key, const auto& value) { Write(text, key, value); });
    return text.str();
}

std::optional<RunRequest> DecodeRunRequest(std::string_view text) {
    std::map<std::string, std::string> fields;
    std::istringstream lines{std::string(text)};
    for (std::string key, value; std::getline(lines, key, '=') && std::getline(lines, value);) {
        fields[key] = value;
    }
    RunRequest request;
    bool whole = true;
    EachField(request, [&](const char* key, auto& value) {
        const auto found = fields.find(key);
        whole = Read(found != fields.end() ? &found->second : nullptr, value) && whole;
    });
    return whole ? std::optional<RunRequest>(request) : std::nullopt;
}

} // namespace sim
