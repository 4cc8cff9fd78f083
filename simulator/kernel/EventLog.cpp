#include "simulator/kernel/EventLog.h"

#include <algorithm>
#include <cstdio>

namespace sim {
namespace {

/// A path as a word of its own: quoted when it would not be one.
std::string AsWord(const std::string& path) {
    const bool plain = std::all_of(path.begin(), path.end(), [](char c) {
        return c > ' ' && c < '\x7F' && c != '"' && c != '\\';
    });
    return plain && !path.empty() ? path : EventLog::Quoted(path);
}

} // namespace

void EventLog::Add(std::string_view operation, std::string_view path, std::string_view data) {
    if (Active()) {
        Record({now(), thread(), std::string(operation), std::string(path), std::string(data)});
    }
}

void EventLog::AddWorld(std::string_view operation, std::string_view path, std::string_view data) {
    if (Active()) {
        Record({now(), 0, std::string(operation), std::string(path), std::string(data)});
    }
}

void EventLog::Record(Event event) {
    if (keeping_) {
        kept_.push_back(event);
    }
    if (!file_.IsOpen()) {
        return;
    }
    if (event.operation == "read" && last_.operation == "read" && event.thread == last_.thread &&
        event.path == last_.path && event.data == last_.data) {
        repeatedAt_ = event.at;
        ++repeats_;
        return;
    }
    EndRepeats();
    file_.Put(Line(event));
    last_ = std::move(event);
}

void EventLog::EndRepeats() {
    if (repeats_ == 0) {
        return;
    }
    Event again = last_;
    again.at = repeatedAt_;
    again.data += " again " + std::to_string(repeats_) + (repeats_ == 1 ? " time" : " times");
    file_.Put(Line(again));
    repeats_ = 0;
}

void EventLog::Abandon() {
    keeping_ = false;
    file_.Abandon();
    repeats_ = 0;
}

void EventLog::Finish() {
    EndRepeats();
    file_.Flush();
}

std::string EventLog::Quoted(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\n') {
            result += "\\n";
        } else if (character == '\t') {
            result += "\\t";
        } else if (character == '"' || character == '\\') {
            result += '\\';
            result += character;
        } else if (byte < 0x20 || byte >= 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", byte);
            result += escape;
        } else {
            result += character;
        }
    }
    return result + "\"";
}

std::string EventLog::Line(const Event& event) {
    return std::to_string(event.at / 1'000) + " " + std::to_string(event.thread) + " " +
           event.operation + " " + AsWord(event.path) + " " + event.data + "\n";
}

} // namespace sim
