#include "simulator/interpose/PathWalk.h"

#include "simulator/board/BoardPaths.h"
#include "simulator/libc/Real.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace sim {
namespace {

constexpr int kMostLinks = 40; // of the kernel, in one path

/// The target of a link of this machine; empty for what is none.
std::string Target(const std::string& path) {
    char target[4096];
    const ssize_t length = SIM_REAL(readlink)(path.c_str(), target, sizeof target);
    return {target, length > 0 ? static_cast<std::size_t>(length) : 0};
}

/// What follows the program's own folder of /proc, without a thread's; nothing for another path.
std::optional<std::string_view> OfOwnProcess(std::string_view path) {
    constexpr std::string_view threads = "/task/";
    for (const std::string& own : {"/proc/" + std::to_string(getpid()), std::string("/proc/self"),
                                   std::string("/proc/thread-self")}) {
        if (Within(path, own)) {
            path.remove_prefix(own.size());
            if (path.starts_with(threads)) {
                path.remove_prefix(std::min(path.find('/', threads.size()), path.size()));
            }
            return path;
        }
    }
    return std::nullopt;
}

/// A walk under way.
class Walk {
  public:
    explicit Walk(Simulation& simulation) : simulation_(simulation) {}

    Place Begin(int folder, std::string rest, bool follow) {
        if (rest.front() != '/' && !SetOut(folder)) {
            return {}; // the kernel says what is wrong with the folder
        }
        const long error = Go(std::move(rest), follow);
        Place place;
        place.error = error;
        place.board = IsBoardPath(done_);
        place.strayed = left_ && !place.board;
        place.path = done_.empty() ? "/" : done_;
        return place;
    }

  private:
    bool SetOut(int folder) {
        if (folder == AT_FDCWD) {
            done_ = FolderOnBoard().empty() ? Target("/proc/self/cwd") : FolderOnBoard();
        } else {
            done_ = simulation_.kernel.Owns(folder)
                        ? simulation_.kernel.PathOf(folder)
                        : Target("/proc/self/fd/" + std::to_string(folder));
        }
        if (done_ == "/") {
            done_.clear();
            return true;
        }
        return done_.starts_with('/');
    }

    long Go(std::string rest, bool follow) {
        int links = 0;
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find('/'), rest.size());
            const std::string name = rest.substr(0, end);
            rest.erase(0, end);
            const bool slash = !rest.empty();
            rest.erase(0, rest.find_first_not_of('/'));
            const bool last = rest.empty();
            if (name.empty()) {
                continue;
            }
            if (const long error = StepTo(name, last && slash); error != 0) {
                return error;
            }
            if (name == "." || name == ".." || IsBoardPath(done_) ||
                BeginsDevicePath(done_ + "/") || (last && !slash && !follow)) {
                continue;
            }
            std::string target = LinkAt(done_);
            if (target.empty()) {
                continue;
            }
            if (++links > kMostLinks) {
                return -ELOOP;
            }
            done_.erase(target.front() == '/' ? 0 : done_.rfind('/'));
            rest = target + (last ? (slash ? "/" : "") : "/" + rest);
        }
        return 0;
    }

    /// Goes on by one name.
    long StepTo(const std::string& name, bool slashAtEnd) {
        if (name == "." || name == "..") {
            if (const long error = CheckFolder(); error != 0) {
                return error;
            }
            if (name == "..") {
                left_ = left_ || IsBoardPath(done_);
                done_.erase(std::min(done_.rfind('/'), done_.size()));
            }
            return 0;
        }
        done_ += "/" + name;
        if (const auto own = OfOwnProcess(done_)) {
            if (*own == "/mounts") {
                done_ = kMountTable;
            } else if (*own == "/mountinfo") {
                done_ = kMountInformation;
            }
        }
        if (slashAtEnd && IsBoardPath(done_)) {
            done_ += "/";
        }
        return 0;
    }

    /// 0 when a walk may go on from a folder of the board's.
    long CheckFolder() const {
        if (!IsBoardPath(done_)) {
            return 0;
        }
        const long mode = simulation_.kernel.paths.Mode(done_);
        if (mode >= 0 && simulation_.kernel.paths.IsLink(done_)) {
            simulation_.kernel.calls.Unmodelled("where the folder above " + done_ + " is");
        }
        return mode < 0 ? mode : S_ISDIR(static_cast<unsigned>(mode)) ? 0 : -ENOTDIR;
    }

    /// The target of a link, with those that /proc has for the program's own folder and files.
    std::string LinkAt(const std::string& path) const {
        const auto own = OfOwnProcess(path);
        if (own && *own == "/cwd" && !FolderOnBoard().empty()) {
            return FolderOnBoard();
        }
        if (const int number = own ? DescriptorOf(*own) : -1; simulation_.kernel.Owns(number)) {
            return simulation_.kernel.PathOf(number);
        }
        std::string target = Target(path);
        const bool file = !own || target.starts_with('/'); // else a pipe or the like
        return file ? target : std::string();
    }

    static int DescriptorOf(std::string_view own) {
        constexpr std::string_view folder = "/fd/";
        return own.starts_with(folder) ? std::atoi(std::string(own.substr(folder.size())).c_str())
                                       : -1;
    }

    Simulation& simulation_;
    std::string done_;  ///< as far as the walk has come; empty: the root
    bool left_ = false; ///< a folder of the board's, by ".."
};

} // namespace

Place WalkPath(Simulation& simulation, int folder, const char* text, bool follow) {
    if (*text == '\0') {
        Place place;
        place.board = simulation.kernel.Owns(folder);
        return place;
    }
    return Walk(simulation).Begin(folder, text, follow);
}

} // namespace sim
