#include "simulator/run/RunRoot.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <unistd.h>

namespace sim {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTemporary = "tavrelin-run-";

/// Locks a folder; -1 when somebody has, or when it is gone.
int Lock(const std::string& folder) {
    const int lock = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) == 0 && access(folder.c_str(), F_OK) == 0) {
        return lock;
    }
    if (lock >= 0) {
        close(lock);
    }
    return -1;
}

void Remove(const std::string& folder, int lock) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    close(lock);
}

/// Removes what runs left that could not do it themselves.
void SweepAwayTheDead(const std::string& base) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(base, ignored)) {
        const std::string path = entry.path();
        if (entry.path().filename().string().starts_with(kTemporary)) {
            if (const int lock = Lock(path); lock >= 0) {
                Remove(path, lock);
            }
        }
    }
}

} // namespace

RunRoot::RunRoot(const std::string& given, bool resume) {
    if (given.empty()) {
        const std::string base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        SweepAwayTheDead(base);
        MakeTemporary(base);
    } else {
        Use(given, resume);
    }
}

RunRoot::~RunRoot() {
    if (lock_ >= 0) {
        Remove(path_, lock_);
    }
}

std::optional<std::int64_t> RunRoot::ClockIn(const std::string& given) {
    std::ifstream file(BoardFileIn(given));
    std::int64_t seconds = 0;
    for (std::string word; file >> word;) {
        if (word == "clock" && file >> seconds) {
            return seconds;
        }
    }
    return std::nullopt;
}

void RunRoot::MakeTemporary(const std::string& base) {
    // Another's sweep may come between the making and the locking.
    for (int tries = 0; lock_ < 0 && tries < 100; ++tries) {
        path_ = base + "/" + kTemporary + "XXXXXX";
        if (mkdtemp(path_.data()) == nullptr) {
            break;
        }
        lock_ = Lock(path_);
    }
    if (lock_ < 0) {
        problem_ = "no temporary folder in " + base + ": " + std::strerror(errno);
    }
}

void RunRoot::Use(const std::string& given, bool resume) {
    std::error_code error;
    if (resume && !fs::is_regular_file(BoardFileIn(given), error)) {
        problem_ = "--root " + given + ": holds no earlier run that could be resumed";
        return;
    }
    fs::create_directories(given, error);
    if (error || !fs::is_directory(given, error)) {
        problem_ = "--root " + given + ": cannot be made a folder";
        return;
    }
    if (!resume && (!fs::is_empty(given, error) || error)) {
        problem_ = "--root " + given +
                   ": not empty; what an earlier run left would change this one "
                   "(--resume goes on with it)";
        return;
    }
    path_ = fs::canonical(given, error);
    if (access(path_.c_str(), W_OK) != 0) {
        problem_ = "--root " + given + ": cannot be written to";
    }
}

} // namespace sim
