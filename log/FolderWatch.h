#pragma once

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <sys/types.h>

namespace tavrelin::daylog {

/// Tells by the kernel's notices what changes in a folder that may not be there yet, may go and
/// come back, and on which cards may be mounted. Nothing runs while nothing happens.
class FolderWatch {
  public:
    explicit FolderWatch(const std::string& folder);
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;
    ~FolderWatch();

    /// Begins to watch. False, told by Complain, when the system does not let it.
    bool Begin();

    struct News {
        bool folder = false;         ///< another one stands in this place, or notices were lost
        std::set<std::string> files; ///< names of those that were written, made or moved here
    };
    /// Takes what was noticed; false as with Begin.
    bool Take(News& news);

    /// The descriptors to wait for: notices to read, and POLLPRI at each change of what is mounted.
    [[nodiscard]] int Notices() const { return notices_; }
    [[nodiscard]] int Mounts() const { return mounts_; }
    /// The file system that the folder lies on, or would.
    [[nodiscard]] dev_t Device() const { return device_; }

  private:
    bool Arm(bool& changed);

    std::filesystem::path folder_;
    int notices_;
    int mounts_;
    int watch_ = -1;
    bool found_ = false; ///< the folder itself is watched, not one above it
    dev_t device_ = 0;
};

} // namespace tavrelin::daylog
