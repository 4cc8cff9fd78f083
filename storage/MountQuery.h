#pragma once

#include <mntent.h>

#include <string>

namespace tavrelin {

/// A question to the mount table and its answer. Each setter takes only a text that is not empty;
/// for an empty one it answers false and leaves the field as it was.
class MountQuery {
  public:
    bool SetMountPoint(const std::string& text);
    bool SetDevice(const std::string& text);
    bool SetFileSystem(const std::string& text);
    bool SetOptions(const std::string& text);

    [[nodiscard]] const std::string& MountPoint() const { return mountPoint_; }
    [[nodiscard]] const std::string& Device() const { return device_; }
    [[nodiscard]] const std::string& FileSystem() const { return fileSystem_; }
    [[nodiscard]] const std::string& Options() const { return options_; }

    /// Whether the mount table lists the mount point; notes the entry last read.
    bool IsListed();

    /// Null when no scan was made or it found nothing. Points into the buffers of a scan that is
    /// over: not to be followed.
    [[nodiscard]] const mntent* Entry() const { return entry_; }

  private:
    const mntent* entry_ = nullptr;
    std::string mountPoint_;
    std::string device_;
    std::string fileSystem_;
    std::string options_;
};

} // namespace tavrelin
