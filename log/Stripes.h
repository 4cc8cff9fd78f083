#pragma once

#include <string>

namespace tavrelin::daylog {

/// Rows of points for gnuplot, with an empty one where their line is broken. Of those that follow
/// each other in one of 1500 stripes only the least and the greatest are there.
class Stripes {
  public:
    Stripes(double from, double to) : from_(from), width_((to - from) / 1500) {}

    void Add(double x, double y);
    /// What comes in the next stripe is not joined to what was before.
    void Break() { isBroken_ = !isEmpty_; }
    [[nodiscard]] std::string Text() const { return text_ + Rows(); }

  private:
    struct Point {
        double x = 0.0;
        double y = 0.0;
    };

    static std::string Row(const Point& point);
    [[nodiscard]] std::string Rows() const;

    double from_;
    double width_;
    double stripe_ = 0.0;
    bool isEmpty_ = true;
    bool isBroken_ = false;
    Point least_;
    Point most_;
    std::string text_; ///< of the stripes before
};

} // namespace tavrelin::daylog
