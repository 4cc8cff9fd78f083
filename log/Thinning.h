#pragma once

#include <cstddef>
#include <vector>

namespace tavrelin::daylog {

/// A point of a line; one whose y is NaN is a break of it.
struct Point {
    double x = 0.0;
    double y = 0.0;
};

/// Fewer points that look the same: of those that follow each other without a break within one of
/// `stripes` parts of [from, to] only the first, the least, the greatest and the last.
std::vector<Point> Thinned(const std::vector<Point>& points, double from, double to,
                           std::size_t stripes);

} // namespace tavrelin::daylog
