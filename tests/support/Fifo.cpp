#include "tests/support/Fifo.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace tavrelin {

namespace {

constexpr mode_t kMode = 0600;
constexpr int kPatience = 60000; // milliseconds, after which a test has gone wrong

} // namespace

Fifo::Fifo(std::string path)
    : path_(std::move(path)),
      descriptor_(::mkfifo(path_.c_str(), kMode) == 0 ? ::open(path_.c_str(), O_RDWR | O_CLOEXEC)
                                                      : -1) {
    if (descriptor_ < 0) {
        throw std::runtime_error("no named pipe " + path_);
    }
}

Fifo::~Fifo() {
    ::close(descriptor_);
}

std::string Fifo::Bytes(std::size_t count) const {
    std::string bytes;
    std::array<char, 4096> piece{};
    while (bytes.size() < count) {
        Await();
        const ssize_t got =
            ::read(descriptor_, piece.data(), std::min(piece.size(), count - bytes.size()));
        if (got < 0) {
            throw std::runtime_error("reading " + path_);
        }
        bytes.append(piece.data(), static_cast<std::size_t>(got));
    }
    return bytes;
}

void Fifo::Await() const {
    pollfd something{descriptor_, POLLIN, 0};
    if (::poll(&something, 1, kPatience) <= 0) {
        throw std::runtime_error("nothing comes through " + path_);
    }
}

std::string Fifo::Line() const {
    std::string line;
    for (std::string next = Bytes(1); next != "\n"; next = Bytes(1)) {
        line += next;
    }
    return line;
}

std::string Fifo::Rest() const {
    int count = 0;
    return ::ioctl(descriptor_, FIONREAD, &count) == 0 ? Bytes(static_cast<std::size_t>(count))
                                                       : "";
}

void Fifo::Say(const std::string& text) const {
    if (::write(descriptor_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("writing " + path_);
    }
}

} // namespace tavrelin
