#pragma once

#include "log/Flag.h"
#include "log/Options.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace tavrelin::daylog {

/// From the least to the greatest of the finite numbers added.
struct Range {
    double from = std::numeric_limits<double>::infinity();
    double to = -std::numeric_limits<double>::infinity();

    void Add(double number);
    [[nodiscard]] double Length() const { return to - from; }
    /// With this part of it as room on both sides, and at least so long; 0 to 1 for none.
    [[nodiscard]] Range Widened(double part, double least) const;
};

/// The result records of a chart.
struct ChartData {
    static constexpr std::size_t kChlorine = 0; ///< in the unit asked for
    static constexpr std::size_t kDark = 1;
    static constexpr std::size_t kReference = 2;

    /// As small as a chart of millions of them wants it.
    struct Record {
        CivilSeconds time = 0;
        Flag flag = Flag::None;
        std::array<float, 3> figures{};

        /// Whether the line of a figure goes through it.
        [[nodiscard]] bool IsOnLine(std::size_t figure) const {
            const float value = figures.at(figure);
            return figure == kChlorine
                       ? std::isfinite(value) && (flag == Flag::None || flag == Flag::Negative)
                       : std::abs(value) < kEndOfRange;
        }
    };

    std::vector<Record> records;
    Range times;
    std::int64_t longestCycle = 0; ///< seconds; what is longer is a gap
    std::uint64_t gaps = 0;
    std::uint64_t flagged = 0;
};

ChartData ReadChartData(const Options& options);

/// What a panel shows of one figure: rows of time and value.
struct PanelData {
    Range range;
    std::string line;
    std::string flagged; ///< those far from the line are at the edge of the range
};

PanelData PanelDataOf(const ChartData& data, std::size_t figure, const Range& times);

} // namespace tavrelin::daylog
