#include "simulator/kernel/FatNames.h"

#include "simulator/libc/Real.h"

#include <algorithm>
#include <filesystem>
#include <strings.h>

namespace sim {
namespace {

bool Exists(const std::string& path) {
    struct stat64 status {};
    return real::stat(path.c_str(), &status) == 0;
}

std::string EntryOf(const std::string& folder, const std::string& name) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
        const std::string found = entry.path().filename();
        if (strcasecmp(found.c_str(), name.c_str()) == 0) {
            return found;
        }
    }
    return name;
}

} // namespace

std::string FindOnFat(const std::string& folder, std::string_view below) {
    std::string path = folder;
    while (!below.empty()) {
        below.remove_prefix(1); // the slash
        const std::size_t end = std::min(below.find('/'), below.size());
        const std::string_view given = below.substr(0, end);
        const std::string name(given.substr(0, given.find_last_not_of('.') + 1));
        path += "/" + (Exists(path + "/" + name) ? name : EntryOf(path, name));
        below.remove_prefix(end);
    }
    return path;
}

bool FatTakes(std::string_view path) {
    path = path.substr(0, path.find_last_not_of('/') + 1);
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return !name.ends_with(' ') && std::ranges::none_of(name, [](char c) {
        return static_cast<unsigned char>(c) < ' ' ||
               std::string_view("\"*:<>?\\|").find(c) != std::string_view::npos;
    });
}

} // namespace sim
