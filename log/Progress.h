#pragma once

#include <chrono>
#include <cstdint>

namespace tavrelin::daylog {

/// One line on standard error, when that is a terminal, about work that takes over a second.
class Progress {
  public:
    explicit Progress(std::uint64_t totalBytes);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /// Takes the line away again.
    ~Progress();

    void Add(std::uint64_t bytes);

  private:
    using Clock = std::chrono::steady_clock;

    std::uint64_t total_;
    std::uint64_t done_ = 0;
    Clock::time_point begin_ = Clock::now();
    Clock::time_point next_ = begin_ + std::chrono::seconds(1);
    bool terminal_;
    bool shown_ = false;
};

} // namespace tavrelin::daylog
