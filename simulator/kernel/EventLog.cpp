#include "simulator/kernel/EventLog.h"

#include "simulator/libc/Real.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

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

EventLog::~EventLog() {
    Finish();
    if (file_ >= 0) {
        real::close(file_);
    }
}

bool EventLog::WriteTo(const std::string& path, EventBuffer& buffer) {
    buffer_ = &buffer;
    file_ = real::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return file_ >= 0;
}

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
    if (file_ < 0) {
        return;
    }
    if (event.operation == "read" && last_.operation == "read" && event.thread == last_.thread &&
        event.path == last_.path && event.data == last_.data) {
        repeatedAt_ = event.at;
        ++repeats_;
        return;
    }
    EndRepeats();
    Put(Line(event));
    last_ = std::move(event);
}

void EventLog::EndRepeats() {
    if (repeats_ == 0) {
        return;
    }
    Event again = last_;
    again.at = repeatedAt_;
    again.data += " again " + std::to_string(repeats_) + (repeats_ == 1 ? " time" : " times");
    Put(Line(again));
    repeats_ = 0;
}

void EventLog::Abandon() {
    keeping_ = false;
    file_ = -1;
    repeats_ = 0;
}

void EventLog::Finish() {
    EndRepeats();
    Flush();
}

void EventLog::Flush() {
    if (file_ >= 0) {
        WriteOut({buffer_->text.data(), buffer_->used});
    }
}

void EventLog::Put(std::string_view text) {
    if (text.size() > EventBuffer::kSize - buffer_->used) {
        Flush();
    }
    if (text.size() > EventBuffer::kSize) {
        WriteOut(text);
        return;
    }
    std::copy(text.begin(), text.end(), buffer_->text.begin() + buffer_->used);
    buffer_->used += static_cast<std::uint32_t>(text.size());
}

void EventLog::WriteOut(std::string_view text) {
    const std::uint64_t size = text.size();
    while (!text.empty()) {
        const ssize_t written = real::write(file_, text.data(), text.size());
        if (written <= 0) {
            break;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    buffer_->used = 0; // first: a run may be stopped between any two of these lines
    buffer_->offset += size;
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
