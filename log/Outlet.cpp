#include "log/Outlet.h"

#include "log/Complaint.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tavrelin::daylog {

namespace {

volatile std::sig_atomic_t toldToEnd = 0;

bool WriteAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

int OpenToWrite(const std::string& path, int how) {
    constexpr mode_t everyoneReads = 0644;
    return open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | how, everyoneReads);
}

} // namespace

Outlet::Outlet(std::string path, bool anew) : path_(std::move(path)), anew_(anew) {
    struct sigaction action {};
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
    action.sa_handler = [](int) { toldToEnd = 1; };
    sigset_t ending{};
    sigemptyset(&ending);
    for (const int signal : {SIGINT, SIGTERM}) {
        sigaction(signal, &action, nullptr);
        sigaddset(&ending, signal);
    }
    sigprocmask(SIG_BLOCK, &ending, &signals_);
}

Outlet::~Outlet() {
    if (descriptor_ > STDOUT_FILENO) {
        close(descriptor_);
    }
}

bool Outlet::Open() {
    if (anew_) {
        return true;
    }
    descriptor_ = path_.empty() ? STDOUT_FILENO : OpenToWrite(path_, O_APPEND);
    if (descriptor_ < 0) {
        ComplainOfErrno(path_);
    }
    return descriptor_ >= 0;
}

void Outlet::TellTrouble() {
    gone_ = errno == EPIPE;
    if (!told_) {
        told_ = true;
        ComplainOfErrno(path_.empty() ? "standard output" : path_);
    }
}

/// A shell that appends leaves the place at the begin until the first write.
bool Outlet::Appends() const {
    return (static_cast<unsigned>(fcntl(descriptor_, F_GETFL)) & O_APPEND) != 0;
}

void Outlet::Write(const std::string& text) {
    if (gone_ || text.empty() || !WaitForRoom()) {
        return;
    }
    const off_t end = lseek(descriptor_, 0, Appends() ? SEEK_END : SEEK_CUR);
    if (WriteAll(descriptor_, text)) {
        told_ = false;
        return;
    }
    TellTrouble();
    if (end >= 0 && ftruncate(descriptor_, end) == 0) {
        lseek(descriptor_, end, SEEK_SET);
    }
}

void Outlet::Replace(const std::string& text) {
    if (text == written_) {
        return;
    }
    const std::string fresh = path_ + ".new";
    const int file = OpenToWrite(fresh, O_TRUNC);
    const bool whole = file >= 0 && WriteAll(file, text);
    if ((file >= 0 && close(file) != 0) || !whole || rename(fresh.c_str(), path_.c_str()) != 0) {
        TellTrouble();
        unlink(fresh.c_str());
        return;
    }
    told_ = false;
    written_ = text;
}

bool Outlet::WaitForRoom() {
    pollfd room{descriptor_, POLLOUT, 0};
    while (toldToEnd == 0 && ppoll(&room, 1, nullptr, &signals_) < 0) {
    }
    return toldToEnd == 0;
}

bool Outlet::Await(int notices, int mounts) {
    std::array<pollfd, 3> all{{{notices, POLLIN, 0}, {mounts, POLLPRI, 0}, {descriptor_, 0, 0}}};
    while (toldToEnd == 0 && !gone_ && ppoll(all.data(), all.size(), nullptr, &signals_) < 0) {
    }
    if (toldToEnd == 0 && !gone_ && (all[2].revents & (POLLERR | POLLHUP)) != 0) {
        errno = EPIPE;
        TellTrouble();
    }
    return toldToEnd == 0 && !gone_;
}

} // namespace tavrelin::daylog
