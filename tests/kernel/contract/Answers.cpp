#include "tests/kernel/contract/Answers.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace contract {

long long Number(const std::string& word) {
    return std::strtoll(word.c_str(), nullptr, 0);
}

std::string Outcome(long result) {
    return result >= 0 ? "ok" : strerrorname_np(errno);
}

std::string Amount(long long result) {
    return result >= 0 ? std::to_string(result) : strerrorname_np(errno);
}

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        char escaped[8];
        if (c == '\n') {
            quoted += "\\n";
        } else if (c < ' ' || c > '~' || c == '"' || c == '\\') {
            std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(c));
            quoted += escaped;
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string TypeAndPermissions(int result, const struct stat& status) {
    constexpr std::array types{Name{"file ", S_IFREG}, Name{"dir ", S_IFDIR},
                               Name{"link ", S_IFLNK}, Name{"chr ", S_IFCHR},
                               Name{"blk ", S_IFBLK}};
    if (result != 0) {
        return Outcome(result);
    }
    std::string text = "other ";
    for (const auto& [name, type] : types) {
        if ((status.st_mode & S_IFMT) == static_cast<mode_t>(type)) {
            text = name;
        }
    }
    char octal[8];
    std::snprintf(octal, sizeof octal, "%04o", static_cast<unsigned>(status.st_mode & 07777U));
    return text + octal;
}

std::string ReadOnce(int descriptor, std::size_t size, std::optional<long long> offset) {
    std::string text(size, '\0');
    const ssize_t count = offset ? pread(descriptor, text.data(), size, *offset)
                                 : read(descriptor, text.data(), size);
    return count < 0 ? Outcome(count) : Quoted(text.substr(0, static_cast<std::size_t>(count)));
}

} // namespace contract
