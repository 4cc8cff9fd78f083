#include "simulator/kernel/EventLog.h"

#include "simulator/libc/Real.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace sim {
namespace {

/// A path as a word of its own: quoted when it would not be one.
std::string asWord(const std::string& path) {
    const bool plain = std::all_of(path.begin(), path.end(), [](char c) {
        return c > ' ' && c < '\x7F' && c != '"' && c != '\\';
    });
    return plain && !path.empty() ? path : EventLog::quoted(path);
}

} // namespace

EventLog::~EventLog() {
    finish();
    if (file_ >= 0) {
        real::close(file_);
    }
}

bool EventLog::writeTo(const std::string& path, EventBuffer& buffer) {
    buffer_ = &buffer;
    file_ = real::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return file_ >= 0;
}

void EventLog::add(std::string_view operation, std::string_view path, std::string_view data) {
    if (active()) {
        record({now(), thread(), std::string(operation), std::string(path), std::string(data)});
    }
}

void EventLog::addWorld(std::string_view operation, std::string_view path, std::string_view data) {
    if (active()) {
        record({now(), 0, std::string(operation), std::string(path), std::string(data)});
    }
}

void EventLog::record(Event event) {
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
    endRepeats();
    put(line(event));
    last_ = std::move(event);
}

void EventLog::endRepeats() {
    if (repeats_ == 0) {
        return;
    }
    Event again = last_;
    again.at = repeatedAt_;
    again.data += " again " + std::to_string(repeats_) + (repeats_ == 1 ? " time" : " times");
    put(line(again));
    repeats_ = 0;
}

void EventLog::abandon() {
    keeping_ = false;
    file_ = -1;
    repeats_ = 0;
}

void EventLog::finish() {
    endRepeats();
    flush();
}

void EventLog::flush() {
    if (file_ >= 0) {
        writeOut({buffer_->text.data(), buffer_->used});
    }
}

void EventLog::put(std::string_view text) {
    if (text.size() > EventBuffer::size - buffer_->used) {
        flush();
    }
    if (text.size() > EventBuffer::size) {
        writeOut(text);
        return;
    }
    std::copy(text.begin(), text.end(), buffer_->text.begin() + buffer_->used);
    buffer_->used += static_cast<std::uint32_t>(text.size());
}

void EventLog::writeOut(std::string_view text) {
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

std::string EventLog::quoted(std::string_view text) {
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

std::string EventLog::line(const Event& event) {
    return std::to_string(event.at / 1'000) + " " + std::to_string(event.thread) + " " +
           event.operation + " " + asWord(event.path) + " " + event.data + "\n";
}

} // namespace sim
