#include "simulator/board/Lines.h"

#include "simulator/board/KernelNumber.h"

#include <cerrno>
#include <charconv>

namespace sim {
namespace {

/// Reads the number of a line; 0 or an errno.
int LineNumber(std::string_view text, unsigned& line) {
    std::int32_t number = 0;
    const int error = KernelNumber(text, number);
    line = static_cast<unsigned>(number);
    return error == 0 && line >= Lines::kCount ? EINVAL : error;
}

bool Watches(Edge edge, bool level) {
    return edge == Edge::Both || edge == (level ? Edge::Rising : Edge::Falling);
}

} // namespace

Lines::Lines(const LinesSetup& setup) {
    for (const std::string& name : setup.high) {
        SetInput(Number(name).value(), true);
    }
    for (const std::string& name : setup.exported) {
        At(Number(name).value()).exported = true;
    }
}

int Lines::ExportLine(std::string_view number) {
    unsigned wanted = 0;
    if (const int error = LineNumber(number, wanted); error != 0) {
        return error;
    }
    Line& line = At(wanted);
    if (line.exported) {
        return EBUSY;
    }
    line.exported = true;
    ++line.exports;
    return 0;
}

int Lines::UnexportLine(std::string_view number) {
    unsigned wanted = 0;
    if (const int error = LineNumber(number, wanted); error != 0) {
        return error;
    }
    Line& line = At(wanted);
    if (!line.exported) {
        return EINVAL;
    }
    line.exported = false;
    line.edge = Edge::None;
    line.activeLow = false;
    return 0;
}

int Lines::SetDirection(unsigned number, std::string_view text) {
    text = WithoutNewline(text);
    Line& line = At(number);
    if (text == "in") {
        if (line.output) {
            line.output = false;
            line.level = line.outside;
        }
        Changed();
        return 0;
    }
    if (text != "out" && text != "low" && text != "high") {
        return EINVAL;
    }
    line.output = true;
    line.level = text == "high";
    Changed();
    return 0;
}

int Lines::SetEdge(unsigned number, std::string_view text) {
    text = WithoutNewline(text);
    Edge edge = Edge::None;
    if (text == "rising") {
        edge = Edge::Rising;
    } else if (text == "falling") {
        edge = Edge::Falling;
    } else if (text == "both") {
        edge = Edge::Both;
    } else if (text != "none") {
        return EINVAL;
    }
    Line& line = At(number);
    const bool refused = edge != Edge::None && edge != line.edge && line.output;
    line.edge = refused ? Edge::None : edge; // the old one is given up before
    return refused ? EIO : 0;
}

int Lines::SetValue(unsigned number, std::string_view text) {
    Line& line = At(number);
    if (!line.output) {
        return EPERM;
    }
    std::int32_t value = 0;
    if (const int error = KernelNumber(text, value); error != 0) {
        return error;
    }
    line.level = (value != 0) != line.activeLow;
    Changed();
    return 0;
}

int Lines::SetActiveLow(unsigned number, std::string_view text) {
    std::int32_t value = 0;
    const int error = KernelNumber(text, value);
    if (error == 0) {
        At(number).activeLow = value != 0;
    }
    return error;
}

void Lines::SetInput(unsigned number, bool level) {
    Line& line = At(number);
    line.outside = level;
    if (line.output || line.level == level) {
        return;
    }
    line.level = level;
    if (Watches(line.edge, level != line.activeLow)) {
        ++line.edges;
    }
}

void Lines::Drive(unsigned number, bool level) {
    Line& line = At(number);
    if (line.output) {
        line.level = level;
        Changed();
    }
}

bool Lines::Drives(unsigned number, bool level) const {
    const Line& line = At(number);
    return line.output && line.level == level;
}

std::string Lines::DirectionText(unsigned number) const {
    return At(number).output ? "out\n" : "in\n";
}

std::string Lines::EdgeText(unsigned number) const {
    switch (At(number).edge) {
    case Edge::Rising:
        return "rising\n";
    case Edge::Falling:
        return "falling\n";
    case Edge::Both:
        return "both\n";
    case Edge::None:
        break;
    }
    return "none\n";
}

std::string Lines::ValueText(unsigned number) const {
    return At(number).level != At(number).activeLow ? "1\n" : "0\n";
}

std::string Lines::ActiveLowText(unsigned number) const {
    return At(number).activeLow ? "1\n" : "0\n";
}

std::string Lines::Name(unsigned number) {
    return static_cast<char>('A' + number / 32) + std::to_string(number % 32);
}

std::optional<unsigned> Lines::Number(std::string_view name) {
    unsigned bit = 0;
    if (name.size() < 2 || name[0] < 'A' || name[0] > 'D' || (name[1] == '0' && name.size() > 2)) {
        return std::nullopt;
    }
    const auto [end, error] = std::from_chars(name.data() + 1, name.data() + name.size(), bit);
    if (error != std::errc{} || end != name.data() + name.size() || bit > 31) {
        return std::nullopt;
    }
    return static_cast<unsigned>(name[0] - 'A') * 32 + bit;
}

void Lines::Changed() const {
    if (onOutputChange) {
        onOutputChange();
    }
}

} // namespace sim
