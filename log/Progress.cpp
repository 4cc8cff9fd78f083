#include "log/Progress.h"

#include <algorithm>
#include <iostream>
#include <unistd.h>

namespace tavrelin::daylog {

Progress::Progress(std::uint64_t totalBytes)
    : total_(std::max<std::uint64_t>(totalBytes, 1)), terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (shown_) {
        std::cerr << "\r\033[K" << std::flush;
    }
}

void Progress::Add(std::uint64_t bytes) {
    done_ += bytes;
    if (!terminal_ || Clock::now() < next_) {
        return;
    }
    constexpr std::uint64_t megabyte = 1'000'000;
    const std::chrono::duration<double> elapsed = Clock::now() - begin_;
    std::cerr << "\r" << std::min<std::uint64_t>(done_ * 100 / total_, 100) << " %, "
              << done_ / megabyte << " MB, "
              << static_cast<std::uint64_t>(static_cast<double>(done_) / elapsed.count() / 1e6)
              << " MB/s\033[K" << std::flush;
    shown_ = true;
    next_ = Clock::now() + std::chrono::milliseconds(200);
}

} // namespace tavrelin::daylog
