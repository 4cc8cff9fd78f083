#include "simulator/run/ConsoleWatch.h"

#include <algorithm>
#include <utility>

namespace sim {
namespace {

constexpr std::string_view statusTag = "TAVRELIN,";
constexpr std::string_view stepTag = "main.cpp, 889: ";
constexpr std::string_view errorTag = "!!!Error";
/// Longer lines are none of ours; more of them need not be kept.
constexpr std::size_t longestLine = 4096;

bool begins(std::string_view text, std::string_view with) {
    return text.substr(0, with.size()) == with;
}

} // namespace

ConsoleWatch::Verdict ConsoleWatch::take(std::string_view text) {
    Verdict verdict;
    while (!text.empty() && !verdict.limit) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        takePart(text.substr(0, length), verdict);
        text.remove_prefix(length);
    }
    return verdict;
}

std::string ConsoleWatch::release() {
    return std::exchange(held_, {});
}

/// Takes the rest of a line, with its newline, or a part of one without.
void ConsoleWatch::takePart(std::string_view part, Verdict& verdict) {
    const bool whole = part.back() == '\n';
    line_ += part.substr(0, std::min(part.size() - (whole ? 1 : 0), longestLine - line_.size()));
    held_ += part;
    Line kind = mayBecomeStatus() ? Line::statusBegins : Line::ordinary;
    if (whole) {
        kind = takeLine(line_);
        line_.clear();
    }
    if (kind == Line::stepBeyondLimit) {
        held_.clear();
        verdict.limit = "steps";
    } else if (kind != Line::statusBegins || !stepLimit_) {
        verdict.show += release();
    }
    if (kind == Line::lastResult) {
        verdict.limit = "measurements";
    }
}

bool ConsoleWatch::mayBecomeStatus() const {
    const std::size_t known = std::min(line_.size(), statusTag.size());
    return inStatus_ || begins(statusTag, std::string_view(line_).substr(0, known));
}

ConsoleWatch::Line ConsoleWatch::takeLine(std::string_view line) {
    if (inStatus_) {
        inStatus_ = false;
        return begins(line, ",") ? takeMessage(line.substr(1)) : Line::ordinary;
    }
    if (begins(line, statusTag)) {
        inStatus_ = true;
        return Line::statusBegins;
    }
    if (begins(line, stepTag)) {
        stepShown_ = true;
        ++steps_;
        if (onStep) {
            onStep(steps_);
        }
    }
    return Line::ordinary;
}

ConsoleWatch::Line ConsoleWatch::takeMessage(std::string_view message) {
    if (begins(message, errorTag)) {
        return Line::ordinary;
    }
    const bool result = stepShown_ && message == announced_;
    stepShown_ = false;
    if (result) {
        ++measurements_;
        return measurementLimit_ && measurements_ >= *measurementLimit_ ? Line::lastResult
                                                                        : Line::ordinary;
    }
    announced_ = message;
    return stepLimit_ && steps_ >= *stepLimit_ ? Line::stepBeyondLimit : Line::ordinary;
}

} // namespace sim
