#include "simulator/live/LiveHand.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>
#include <utility>

namespace sim {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using Stage = LiveLink::Stage;

constexpr auto kPatience = 2s;
constexpr double kLeastPace = 1e-6;
constexpr double kMostPace = 1e9;

/// A command for the run, or why it is none.
struct Command {
    std::string text;
    std::string problem;
};

/// A value in TOML, which for these kinds is what it is in JSON.
std::string Plain(const json& value) {
    return value.is_string() ? value.dump(-1, ' ', true) : value.dump();
}

Command PaceCommand(const json& request) {
    const json& value = request.at("value");
    const double pace = value.is_number() ? value.get<double>() : -1.0;
    if (pace != 0.0 && !(pace >= kLeastPace && pace <= kMostPace)) {
        return {"", "pace: takes 0 or a number from 0.000001 to 1000000000"};
    }
    char text[32];
    std::snprintf(text, sizeof text, "pace %.17g", pace);
    return {text, ""};
}

Command FlagCommand(const json& request) {
    const std::string value = Plain(request.at("value"));
    if (value != "\"blocked\"" && value != "\"free\"") {
        return {"", R"(flag: takes "blocked" or "free")"};
    }
    return {"[[pump.event]]\nflag_seen = " + std::string(value == "\"free\"" ? "true" : "false") +
                "\n",
            ""};
}

/// A table of a scenario in which the request's values stand as they are; whether they are right is
/// for the reader of scenarios to say.
Command TableCommand(const json& request, const char* table, const char* keyOfValue) {
    std::string text = "[[" + std::string(table) + "]]\n";
    for (const auto& [key, value] : request.items()) {
        if (value.is_structured() || value.is_null()) {
            return {"", key + ": takes one value"};
        }
        if (key != "do") {
            text += (key == "value" ? keyOfValue : key) + " = " + Plain(value) + "\n";
        }
    }
    return {text, ""};
}

/// What a command takes beside "do", and what makes it one for the run.
struct Kind {
    std::set<std::string> needs;
    std::set<std::string> may;
    Command (*make)(const json& request);
};

const std::map<std::string, Kind>& Kinds() {
    static const auto word = [](const json& request) {
        return Command{request.at("do").get<std::string>(), ""};
    };
    static const std::map<std::string, Kind> kinds{
        {"pause", {{}, {}, word}},
        {"run", {{}, {}, word}},
        {"step", {{}, {}, word}},
        {"measurement", {{}, {}, word}},
        {"pace", {{"value"}, {}, PaceCommand}},
        {"absorbance",
         {{"value"},
          {},
          [](const json& request) { return TableCommand(request, "sample.event", "absorbance"); }}},
        {"noise",
         {{"value"},
          {},
          [](const json& request) { return TableCommand(request, "detector.event", "noise"); }}},
        {"card",
         {{"value"},
          {},
          [](const json& request) { return TableCommand(request, "card.event", "do"); }}},
        {"flag", {{"value"}, {}, FlagCommand}},
        {"fault",
         {{"call"}, {"path", "errno", "bytes", "occurrence", "repeat"}, [](const json& request) {
              return TableCommand(request, "fault", "");
          }}}};
    return kinds;
}

Command CommandOf(const json& request) {
    if (!request.is_object() || !request.contains("do") || !request.at("do").is_string()) {
        return {"", R"(takes a JSON object such as {"do":"pause"})"};
    }
    const auto kind = Kinds().find(request.at("do").get<std::string>());
    if (kind == Kinds().end()) {
        std::string names;
        for (const auto& [name, ignored] : Kinds()) {
            names += (names.empty() ? "" : ", ") + name;
        }
        return {"", "do: unknown command; known: " + names};
    }
    for (const std::string& key : kind->second.needs) {
        if (!request.contains(key)) {
            return {"", key + ": is missing"};
        }
    }
    for (const auto& [key, ignored] : request.items()) {
        if (key != "do" && kind->second.needs.count(key) + kind->second.may.count(key) == 0) {
            return {"", kind->first + ": takes no such key"};
        }
    }
    return kind->second.make(request);
}

LiveHand::Answer Refuse(const std::string& why, int status = 400) {
    return {status, "{\"error\":" + JsonText(why) + "}"};
}

} // namespace

LiveHand::LiveHand(LiveLink& link, LiveFeed& feed, const std::string& scenario,
                   const std::string& command)
    : link_(link), feed_(feed),
      scenario_("# Made on the live bench. Repeats the run byte for byte:\n#   " + command + "\n") {
    scenario_ += scenario;
    if (scenario_.back() != '\n') {
        scenario_ += '\n';
    }
}

Stage LiveHand::Post(const std::string& command) {
    std::copy_n(command.c_str(), command.size() + 1, link_.command.begin());
    link_.stage = Stage::Posted;
    link_.news.fetch_or(LiveLink::kCommand, std::memory_order_release);
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        Stage stage = link_.stage;
        if (stage == Stage::Done || stage == Stage::Refused) {
            link_.stage = Stage::Free;
            return stage;
        }
        const bool late = feed_.Ended() || std::chrono::steady_clock::now() > deadline;
        if (late && stage == Stage::Posted &&
            link_.stage.compare_exchange_strong(stage, Stage::Free)) {
            return Stage::Free;
        }
        // Read once more: it may have been done just before the end.
        if (feed_.Ended() && stage == Stage::Taken && link_.stage == Stage::Taken) {
            link_.stage = Stage::Free;
            return Stage::Free;
        }
        std::this_thread::sleep_for(1ms);
    }
}

LiveHand::Answer LiveHand::Do(const std::string& body) {
    const json request = json::parse(body, nullptr, false);
    Command command;
    try {
        command = CommandOf(request);
    } catch (const json::exception&) { // a text that is not UTF-8
        command.problem = "takes text in UTF-8";
    }
    if (!command.problem.empty()) {
        return Refuse(command.problem);
    }
    if (command.text.size() >= link_.command.size()) {
        return Refuse("the command is too long");
    }
    const std::lock_guard posting(posting_);
    if (feed_.Ended()) {
        return Refuse("the program has ended");
    }
    switch (Post(command.text)) {
    case Stage::Done:
        break;
    case Stage::Refused:
        return Refuse(link_.refusal.data());
    default:
        return feed_.Ended() ? Refuse("the program has ended")
                             : Refuse("the program lets no board time pass at present", 503);
    }
    const std::int64_t at = link_.at;
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.6f", static_cast<double>(at) / 1e9);
    if (command.text.front() == '[') {
        const std::lock_guard keeping(keeping_);
        scenario_ += WithMoment(command.text, at);
        feed_.Tell(static_cast<double>(at) / 1e9, request.dump());
    }
    return {200, "{\"at\":" + std::string(seconds) + "}"};
}

std::string LiveHand::Scenario() const {
    const std::lock_guard keeping(keeping_);
    return scenario_;
}

} // namespace sim
