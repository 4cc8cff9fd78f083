#include "log/Statistics.h"

#include <algorithm>
#include <cmath>

namespace tavrelin::daylog {

void Spread::Add(double number) {
    ++count_;
    const double distance = number - mean_;
    mean_ += distance / static_cast<double>(count_);
    squares_ += distance * (number - mean_);
    least_ = count_ == 1 ? number : std::min(least_, number);
    most_ = count_ == 1 ? number : std::max(most_, number);
}

double Spread::StandardDeviation() const {
    return count_ < 2 ? 0.0 : std::sqrt(squares_ / static_cast<double>(count_ - 1));
}

void Trend::Add(double x, double y) {
    count_ += 1.0;
    const double distance = x - meanX_;
    meanX_ += distance / count_;
    meanY_ += (y - meanY_) / count_;
    squares_ += distance * (x - meanX_);
    products_ += distance * (y - meanY_);
}

void Cycles::Add(const Span& span) {
    ++lengths_[span.seconds];
    if (longest_.size() < kept_) {
        longest_.push(span);
    } else if (kept_ > 0 && span > longest_.top()) {
        longest_.pop();
        longest_.push(span);
    }
}

std::int64_t Cycles::Median() const {
    std::uint64_t all = 0;
    for (const auto& [seconds, count] : lengths_) {
        all += count;
    }
    std::uint64_t below = 0;
    for (const auto& [seconds, count] : lengths_) {
        below += count;
        if (below * 2 >= all) {
            return seconds;
        }
    }
    return 0;
}

std::uint64_t Cycles::CountAbove(std::int64_t seconds) const {
    std::uint64_t above = 0;
    for (auto at = lengths_.upper_bound(seconds); at != lengths_.end(); ++at) {
        above += at->second;
    }
    return above;
}

std::vector<Cycles::Span> Cycles::Above(std::int64_t seconds) const {
    std::vector<Span> spans;
    for (auto kept = longest_; !kept.empty(); kept.pop()) {
        if (kept.top().seconds > seconds) {
            spans.push_back(kept.top());
        }
    }
    std::sort(spans.begin(), spans.end(),
              [](const Span& a, const Span& b) { return a.begin < b.begin; });
    return spans;
}

} // namespace tavrelin::daylog
