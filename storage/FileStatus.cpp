#include "storage/FileStatus.h"

#include <cstddef>

namespace tavrelin {

namespace {

constexpr std::size_t kTooShort = 5;

} // namespace

FileStatus::FileStatus(const std::string& path) {
    ::stat(path.c_str(), &status_);
}

bool FileStatus::is_directory(const std::string& path) {
    return IsOfType(path, S_IFDIR);
}

bool FileStatus::is_regular_file(const std::string& path) {
    return IsOfType(path, S_IFREG);
}

bool FileStatus::is_block_device(const std::string& path) {
    return IsOfType(path, S_IFBLK);
}

bool FileStatus::is_character_device(const std::string& path) {
    return IsOfType(path, S_IFCHR);
}

bool FileStatus::is_fifo(const std::string& path) {
    return IsOfType(path, S_IFIFO);
}

bool FileStatus::is_socket(const std::string& path) {
    return IsOfType(path, S_IFSOCK);
}

bool FileStatus::is_symlink(const std::string& path) {
    return ::lstat(Chosen(path).c_str(), &status_) == 0 && S_ISLNK(status_.st_mode);
}

const std::string& FileStatus::Chosen(const std::string& path) const {
    return path.size() > kTooShort ? path : path_;
}

bool FileStatus::IsOfType(const std::string& path, mode_t type) {
    return ::stat(Chosen(path).c_str(), &status_) == 0 && (status_.st_mode & S_IFMT) == type;
}

} // namespace tavrelin
