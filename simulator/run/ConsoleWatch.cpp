#include "simulator/run/ConsoleWatch.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace sim {
namespace {

constexpr std::string_view kStatusTag = "TAVRELIN,";
constexpr std::string_view kStepTag = "main.cpp, 889: ";
constexpr std::string_view kErrorTag = "!!!Error";
/// Longer lines are none of ours; more of them need not be kept.
constexpr std::size_t kLongestLine = 4096;

bool Begins(std::string_view text, std::string_view with) {
    return text.substr(0, with.size()) == with;
}

} // namespace

ConsoleWatch::Verdict ConsoleWatch::Read(std::string_view text) {
    Verdict verdict;
    while (!text.empty() && !verdict.limit) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        ReadPart(text.substr(0, length), verdict);
        text.remove_prefix(length);
    }
    return verdict;
}

std::string ConsoleWatch::Release() {
    return std::exchange(held_, {});
}

/// Reads the rest of a line, with its newline, or a part of one without.
void ConsoleWatch::ReadPart(std::string_view part, Verdict& verdict) {
    const bool whole = part.back() == '\n';
    line_ += part.substr(0, std::min(part.size() - (whole ? 1 : 0), kLongestLine - line_.size()));
    held_ += part;
    Line kind = MayBecomeStatus() ? Line::StatusBegins : Line::Ordinary;
    if (whole) {
        kind = ReadLine(line_);
        line_.clear();
    }
    if (kind == Line::StepBeyondLimit) {
        held_.clear();
        verdict.limit = "steps";
    } else if (kind != Line::StatusBegins || !stepLimit_) {
        verdict.show += Release();
    }
    if (kind == Line::LastResult) {
        verdict.limit = "measurements";
    }
}

bool ConsoleWatch::MayBecomeStatus() const {
    const std::size_t known = std::min(line_.size(), kStatusTag.size());
    return inStatus_ || Begins(kStatusTag, std::string_view(line_).substr(0, known));
}

ConsoleWatch::Line ConsoleWatch::ReadLine(std::string_view line) {
    if (inStatus_) {
        inStatus_ = false;
        return Begins(line, ",") ? ReadMessage(line.substr(1)) : Line::Ordinary;
    }
    if (Begins(line, kStatusTag)) {
        inStatus_ = true;
        return Line::StatusBegins;
    }
    if (Begins(line, kStepTag)) {
        stepShown_ = true;
        ++steps_;
        line.remove_prefix(kStepTag.size());
        std::from_chars(line.data(), line.data() + line.size(), stepNumber_);
        if (onStep) {
            onStep(steps_);
        }
    }
    return Line::Ordinary;
}

ConsoleWatch::Line ConsoleWatch::ReadMessage(std::string_view message) {
    if (Begins(message, kErrorTag)) {
        return Line::Ordinary;
    }
    const bool result = stepShown_ && message == announced_;
    stepShown_ = false;
    if (result) {
        ++measurements_;
        return measurementLimit_ && measurements_ >= *measurementLimit_ ? Line::LastResult
                                                                        : Line::Ordinary;
    }
    announced_ = message;
    return stepLimit_ && steps_ >= *stepLimit_ ? Line::StepBeyondLimit : Line::Ordinary;
}

} // namespace sim
