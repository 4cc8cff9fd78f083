#pragma once

#include <sys/stat.h>

#include <string>

namespace tavrelin {

/// What kind of file a path names, asked anew by every predicate. A path of 5 characters or fewer,
/// or one that cannot be examined, is nothing: every predicate then answers false.
class FileStatus {
  public:
    /// Examines the path once; the path itself is not kept.
    explicit FileStatus(const std::string& path);

    bool is_directory(const std::string& path);
    bool is_regular_file(const std::string& path);
    bool is_block_device(const std::string& path);
    bool is_character_device(const std::string& path);
    bool is_fifo(const std::string& path);
    bool is_socket(const std::string& path);
    /// Looks at the link itself; all others follow it.
    bool is_symlink(const std::string& path);

  private:
    [[nodiscard]] const std::string& Chosen(const std::string& path) const;
    bool IsOfType(const std::string& path, mode_t type);

    std::string path_; // stands in for an argument that is too short, and stays empty
    struct stat status_ {};
};

} // namespace tavrelin
