#include "platform/AttributeFile.h"

#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstddef>
#include <memory>

namespace tavrelin {

namespace {

constexpr std::size_t kAttributePage = 4096;
constexpr mode_t kCreationMode = 0666;

std::string FirstWord(std::string_view text) {
    // What the extraction of a word from a stream skips and stops at.
    constexpr std::string_view whitespace = " \t\n\v\f\r";
    const std::size_t begin = text.find_first_not_of(whitespace);
    if (begin == std::string_view::npos) {
        return {};
    }
    text.remove_prefix(begin);
    return std::string(text.substr(0, text.find_first_of(whitespace)));
}

} // namespace

bool AttributeDirectoryExists(const std::string& directory) {
    return ::access(directory.c_str(), R_OK) == 0;
}

bool WriteAttribute(const std::string& path, std::string_view text) {
    // As a file stream opens what it writes: a missing attribute is asked to be created, which the
    // kernel refuses.
    const FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kCreationMode));
    if (!file.IsOpen()) {
        return false;
    }
    [[maybe_unused]] const ssize_t written = ::write(file.Get(), text.data(), text.size());
    return true;
}

std::optional<std::string> ReadAttributeWord(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen()) {
        return std::nullopt;
    }
    // Not cleared: mostly a digit comes.
    const auto page = std::make_unique_for_overwrite<char[]>(kAttributePage);
    const ssize_t length = ::read(file.Get(), page.get(), kAttributePage);
    if (length <= 0) {
        return std::string();
    }
    return FirstWord({page.get(), static_cast<std::size_t>(length)});
}

} // namespace tavrelin
