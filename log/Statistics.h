#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <queue>
#include <tuple>
#include <vector>

namespace tavrelin::daylog {

/// Mean, spread and range of numbers, in one pass.
class Spread {
  public:
    void Add(double number);

    [[nodiscard]] std::uint64_t Count() const { return count_; }
    [[nodiscard]] double Mean() const { return mean_; }
    [[nodiscard]] double Least() const { return least_; }
    [[nodiscard]] double Most() const { return most_; }
    /// Of a sample (n - 1); 0 for fewer than two numbers.
    [[nodiscard]] double StandardDeviation() const;

  private:
    std::uint64_t count_ = 0;
    double mean_ = 0.0;
    double squares_ = 0.0; ///< of the distances from the mean
    double least_ = 0.0;
    double most_ = 0.0;
};

/// The straight line through points that is nearest to them, in one pass.
class Trend {
  public:
    void Add(double x, double y);
    /// Change of y with x; 0 while all x are the same.
    [[nodiscard]] double Slope() const { return squares_ > 0.0 ? products_ / squares_ : 0.0; }

  private:
    double count_ = 0.0;
    double meanX_ = 0.0;
    double meanY_ = 0.0;
    double squares_ = 0.0;
    double products_ = 0.0;
};

/// Spans between measurements in whole seconds: their number by length, and where the longest
/// began.
class Cycles {
  public:
    /// Enough of the longest to name every gap of a year that has some a day.
    static constexpr std::size_t kMany = 1000;

    /// kept: so many of the longest are kept with their begin and end.
    explicit Cycles(std::size_t kept = 0) : kept_(kept) {}

    struct Span {
        std::int64_t seconds = 0;
        std::int64_t begin = 0; ///< local time, as the log shows it
        std::int64_t end = 0;
        bool operator==(const Span&) const = default;
        bool operator>(const Span& other) const {
            return std::tie(seconds, begin) > std::tie(other.seconds, other.begin);
        }
    };

    void Add(const Span& span);

    [[nodiscard]] bool Empty() const { return lengths_.empty(); }
    [[nodiscard]] std::int64_t Median() const;
    [[nodiscard]] std::int64_t Longest() const { return lengths_.rbegin()->first; }
    [[nodiscard]] std::uint64_t CountAbove(std::int64_t seconds) const;
    /// Those of the kept ones that are longer, by their begin.
    [[nodiscard]] std::vector<Span> Above(std::int64_t seconds) const;

  private:
    std::size_t kept_;
    std::map<std::int64_t, std::uint64_t> lengths_;
    std::priority_queue<Span, std::vector<Span>, std::greater<>> longest_;
};

} // namespace tavrelin::daylog
