#include "simulator/runtime/ConsoleWatch.h"

namespace sim {
namespace {

constexpr std::string_view statusTag = "TAVRELIN,";
constexpr std::string_view stepTag = "main.cpp, 889: ";
constexpr std::string_view errorTag = "!!!Error";

bool begins(std::string_view text, std::string_view with) {
    return text.substr(0, with.size()) == with;
}

} // namespace

ConsoleWatch::Verdict ConsoleWatch::take(std::string_view text) {
    const std::size_t shownBefore = partial_.size();
    partial_ += text;
    Verdict verdict{text.size(), false};
    std::size_t begin = 0;
    for (std::size_t end = partial_.find('\n'); end != std::string::npos && !verdict.ends;
         end = partial_.find('\n', begin)) {
        const Line line = takeLine(std::string_view(partial_).substr(begin, end - begin), begin);
        begin = end + 1;
        if (line == Line::lastResult) {
            verdict = {begin - shownBefore, true};
        } else if (line == Line::stepBeyondLimit) {
            verdict = {statusBegin_ > shownBefore ? statusBegin_ - shownBefore : 0, true};
        }
    }
    partial_.erase(0, begin);
    return verdict;
}

ConsoleWatch::Line ConsoleWatch::takeLine(std::string_view line, std::size_t begin) {
    if (inStatus_) {
        inStatus_ = false;
        return begins(line, ",") ? takeMessage(line.substr(1)) : Line::ordinary;
    }
    if (begins(line, statusTag)) {
        inStatus_ = true;
        statusBegin_ = begin;
    } else if (begins(line, stepTag)) {
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
