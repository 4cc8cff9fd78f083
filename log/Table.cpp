#include "log/Table.h"

#include "log/Complaint.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <unistd.h>

namespace tavrelin::daylog {

namespace {

/// A CSV cell: in quotes where it holds what would end it.
std::string Cell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return quoted + "\"";
}

/// The length of what follows, if it is a whole UTF-8 character of several bytes; else 0.
std::size_t MultiByte(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first >= 0xF0 && first < 0xF5   ? 4
                               : first >= 0xE0 && first < 0xF0 ? 3
                               : first >= 0xC2 && first < 0xE0 ? 2
                                                               : 0;
    const std::string_view rest = text.substr(1, length - (length > 0 ? 1 : 0));
    const bool whole = length > 0 && rest.size() == length - 1 &&
                       std::all_of(rest.begin(), rest.end(), [](char c) {
                           return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
                       });
    return whole ? length : 0;
}

} // namespace

std::string Shown(std::string_view text) {
    constexpr std::size_t most = 100;
    std::string shown;
    for (const char c : text.substr(0, most)) {
        shown += c >= ' ' && c <= '~' ? c : '?';
    }
    return shown + (text.size() > most ? "..." : "");
}

bool IsPlain(std::string_view text) {
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        const std::size_t length = byte < 0x80 ? 1 : MultiByte(text);
        if (length == 0 || byte < 0x20 || byte == 0x7F) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string JsonText(std::string_view text) {
    std::string result = "\"";
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        std::size_t length = 1;
        if (byte == '"' || byte == '\\') {
            result += '\\';
            result += text.front();
        } else if (byte < 0x20 || byte == 0x7F) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", byte);
            result += escape.data();
        } else if (byte < 0x80) {
            result += text.front();
        } else if ((length = MultiByte(text)) > 0) {
            result += text.substr(0, length);
        } else {
            length = 1;
            result += "\\ufffd";
        }
        text.remove_prefix(length);
    }
    return result + "\"";
}

std::string JsonNumber(std::string_view number) {
    const bool isNumber = !number.empty() && number.find_first_of("ni") == std::string_view::npos;
    return std::string(isNumber ? number : "null");
}

bool FlushOutput() {
    std::cout.flush();
    if (!std::cout || std::fflush(stdout) != 0) {
        ComplainOfErrno("standard output");
        return false;
    }
    return true;
}

Table::Table(std::vector<Column> columns, bool json)
    : columns_(std::move(columns)), form_(json                         ? Form::Json
                                          : isatty(STDOUT_FILENO) != 0 ? Form::Aligned
                                                                       : Form::Csv),
      widths_(columns_.size()) {
    std::vector<std::string> header;
    for (const Column& column : columns_) {
        header.emplace_back(column.name);
    }
    if (form_ == Form::Aligned) {
        waiting_.push_back(header);
    } else if (form_ == Form::Csv) {
        Write(header);
    }
}

void Table::Add(std::vector<std::string> cells) {
    constexpr std::size_t looksAt = 100;
    if (form_ == Form::Aligned && waiting_.size() < looksAt && widths_.front() == 0) {
        waiting_.push_back(std::move(cells));
        return;
    }
    WriteAligned();
    Write(cells);
}

bool Table::Finish() {
    WriteAligned();
    return FlushOutput();
}

void Table::WriteAligned() {
    for (const auto& row : waiting_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths_[i] = std::max(widths_[i], row[i].size());
        }
    }
    for (const auto& row : waiting_) {
        Write(row);
    }
    waiting_.clear();
}

void Table::Write(const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const Column& column = columns_[i];
        if (form_ == Form::Json) {
            line += (i == 0 ? "{" : ",") + JsonText(column.name) + ":" +
                    (column.text ? JsonText(cells[i]) : JsonNumber(cells[i]));
        } else if (form_ == Form::Csv) {
            line += (i == 0 ? "" : ",") + Cell(cells[i]);
        } else {
            const std::string filling(widths_[i] - std::min(widths_[i], cells[i].size()), ' ');
            line += (i == 0 ? "" : "  ") + (column.text ? cells[i] + filling : filling + cells[i]);
        }
    }
    if (form_ == Form::Aligned) {
        line.erase(line.find_last_not_of(' ') + 1);
    }
    line += form_ == Form::Json ? "}\n" : "\n";
    std::cout.write(line.data(), static_cast<std::streamsize>(line.size()));
}

} // namespace tavrelin::daylog
