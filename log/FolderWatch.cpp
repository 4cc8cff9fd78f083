#include "log/FolderWatch.h"

#include "log/Complaint.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrelin::daylog {

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t kNames = IN_CREATE | IN_MOVED_TO;
constexpr std::uint32_t kSelf = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

/// Absolute, without a slash at its end.
fs::path Normal(const std::string& folder) {
    std::error_code error;
    const fs::path path = fs::absolute(folder, error).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

} // namespace

FolderWatch::FolderWatch(const std::string& folder)
    : folder_(Normal(folder)), notices_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      mounts_(open("/proc/self/mounts", O_RDONLY | O_CLOEXEC)) {}

FolderWatch::~FolderWatch() {
    close(notices_);
    close(mounts_);
}

bool FolderWatch::Begin() {
    bool changed = false;
    return Arm(changed);
}

/// Watches the folder, or while it is not there the nearest one above it.
bool FolderWatch::Arm(bool& changed) {
    for (;;) {
        fs::path nearest = folder_;
        int watch = inotify_add_watch(notices_, nearest.c_str(), kNames | IN_MODIFY | kSelf);
        while (watch < 0 && (errno == ENOENT || errno == ENOTDIR) && nearest.has_relative_path()) {
            nearest = nearest.parent_path();
            watch = inotify_add_watch(notices_, nearest.c_str(), kNames | kSelf);
        }
        if (watch < 0) {
            ComplainOfErrno(nearest);
            return false;
        }
        struct stat status {};
        device_ = stat(nearest.c_str(), &status) == 0 ? status.st_dev : 0;
        found_ = nearest == folder_;
        if (watch == watch_) {
            return true;
        }
        if (watch_ >= 0) {
            inotify_rm_watch(notices_, watch_);
        }
        watch_ = watch;
        changed = true;
        if (found_) {
            return true;
        }
        // What was not there may have come before the one above it was watched.
    }
}

bool FolderWatch::Take(News& news) {
    alignas(inotify_event) std::array<char, 1 << 14> notices{};
    for (ssize_t size = 0; (size = read(notices_, notices.data(), notices.size())) > 0;) {
        const inotify_event* event = nullptr;
        for (const char* at = notices.data(); at < notices.data() + size;
             at += sizeof(inotify_event) + event->len) {
            event = reinterpret_cast<const inotify_event*>(at);
            if ((event->mask & IN_Q_OVERFLOW) != 0) {
                news.folder = true;
            } else if (event->wd == watch_ && found_ && (event->mask & kGone) == 0) {
                news.files.emplace(event->len > 0 ? at + sizeof(inotify_event) : "");
            }
        }
    }
    return Arm(news.folder);
}

} // namespace tavrelin::daylog
