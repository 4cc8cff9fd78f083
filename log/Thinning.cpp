#include "log/Thinning.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrelin::daylog {

std::vector<Point> Thinned(const std::vector<Point>& points, double from, double to,
                           std::size_t stripes) {
    const double width = std::max(to - from, 1e-9) / static_cast<double>(stripes);
    const auto stripe = [&](const Point& point) { return std::floor((point.x - from) / width); };
    std::vector<Point> kept;
    for (auto at = points.begin(); at != points.end();) {
        auto end = std::next(at);
        while (!std::isnan(at->y) && end != points.end() && !std::isnan(end->y) &&
               stripe(*end) == stripe(*at)) {
            ++end;
        }
        const auto [least, most] =
            std::minmax_element(at, end, [](const Point& a, const Point& b) { return a.y < b.y; });
        std::array chosen{at, least, most, std::prev(end)};
        std::sort(chosen.begin(), chosen.end());
        for (std::size_t i = 0; i < chosen.size(); ++i) {
            if (i == 0 || chosen.at(i) != chosen.at(i - 1)) {
                kept.push_back(*chosen.at(i));
            }
        }
        at = end;
    }
    return kept;
}

} // namespace tavrelin::daylog
