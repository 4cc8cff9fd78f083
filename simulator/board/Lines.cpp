#include "simulator/board/Lines.h"

#include "simulator/board/KernelNumber.h"

#include <cerrno>
#include <charconv>

namespace sim {
namespace {

std::optional<unsigned> lineNumber(std::string_view text) {
    const auto number = kernelNumber(text);
    if (!number || *number < 0 || *number >= Lines::count) {
        return std::nullopt;
    }
    return static_cast<unsigned>(*number);
}

bool watches(Edge edge, bool level) {
    return edge == Edge::both || edge == (level ? Edge::rising : Edge::falling);
}

} // namespace

int Lines::exportLine(std::string_view number) {
    const auto wanted = lineNumber(number);
    if (!wanted) {
        return EINVAL;
    }
    Line& line = at(*wanted);
    if (line.exported) {
        return EBUSY;
    }
    line.exported = true;
    ++line.exports;
    return 0;
}

int Lines::unexportLine(std::string_view number) {
    const auto wanted = lineNumber(number);
    if (!wanted || !at(*wanted).exported) {
        return EINVAL;
    }
    Line& line = at(*wanted);
    line.exported = false;
    line.edge = Edge::none;
    return 0;
}

int Lines::setDirection(unsigned number, std::string_view text) {
    text = withoutNewline(text);
    Line& line = at(number);
    if (text == "in") {
        if (line.output) {
            line.output = false;
            line.level = line.outside;
        }
        changed();
        return 0;
    }
    if (text != "out" && text != "low" && text != "high") {
        return EINVAL;
    }
    if (line.edge != Edge::none) {
        return EIO; // the kernel refuses to drive a line that is in use as an interrupt
    }
    line.output = true;
    line.level = text == "high";
    changed();
    return 0;
}

int Lines::setEdge(unsigned number, std::string_view text) {
    text = withoutNewline(text);
    Edge edge = Edge::none;
    if (text == "rising") {
        edge = Edge::rising;
    } else if (text == "falling") {
        edge = Edge::falling;
    } else if (text == "both") {
        edge = Edge::both;
    } else if (text != "none") {
        return EINVAL;
    }
    Line& line = at(number);
    if (edge != Edge::none && line.output) {
        return EIO;
    }
    line.edge = edge;
    return 0;
}

int Lines::setValue(unsigned number, std::string_view text) {
    Line& line = at(number);
    if (!line.output) {
        return EPERM;
    }
    const auto value = kernelNumber(text);
    if (!value) {
        return EINVAL;
    }
    line.level = *value != 0;
    changed();
    return 0;
}

void Lines::setInput(unsigned number, bool level) {
    Line& line = at(number);
    line.outside = level;
    if (line.output || line.level == level) {
        return;
    }
    line.level = level;
    if (watches(line.edge, level)) {
        ++line.edges;
    }
}

void Lines::drive(unsigned number, bool level) {
    Line& line = at(number);
    if (line.output) {
        line.level = level;
        changed();
    }
}

bool Lines::drives(unsigned number, bool level) const {
    const Line& line = at(number);
    return line.output && line.level == level;
}

std::string Lines::directionText(unsigned number) const {
    return at(number).output ? "out\n" : "in\n";
}

std::string Lines::edgeText(unsigned number) const {
    switch (at(number).edge) {
    case Edge::rising:
        return "rising\n";
    case Edge::falling:
        return "falling\n";
    case Edge::both:
        return "both\n";
    case Edge::none:
        break;
    }
    return "none\n";
}

std::string Lines::valueText(unsigned number) const {
    return at(number).level ? "1\n" : "0\n";
}

std::string Lines::name(unsigned number) {
    return static_cast<char>('A' + number / 32) + std::to_string(number % 32);
}

std::optional<unsigned> Lines::number(std::string_view name) {
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

void Lines::changed() const {
    if (onOutputChange) {
        onOutputChange();
    }
}

} // namespace sim
