#include "log/Stripes.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace tavrelin::daylog {

void Stripes::Add(double x, double y) {
    const double stripe = std::floor((x - from_) / width_);
    if (isEmpty_ || stripe != stripe_) {
        text_ += Rows() + (isBroken_ ? "\n" : "");
        stripe_ = stripe;
        least_ = most_ = {x, y};
    }
    isEmpty_ = false;
    isBroken_ = false;
    least_ = y < least_.y ? Point{x, y} : least_;
    most_ = y > most_.y ? Point{x, y} : most_;
}

std::string Stripes::Row(const Point& point) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.0f %.9g\n", point.x, point.y);
    return text.data();
}

std::string Stripes::Rows() const {
    if (isEmpty_) {
        return "";
    }
    const bool falls = most_.x < least_.x;
    const bool areTwo = most_.y > least_.y;
    return Row(falls ? most_ : least_) + (areTwo ? Row(falls ? least_ : most_) : "");
}

} // namespace tavrelin::daylog
