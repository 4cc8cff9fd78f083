#include "simulator/launcher/ProgramFile.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <link.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace sim {
namespace {

namespace fs = std::filesystem;

bool Runnable(const std::string& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && access(path.c_str(), X_OK) == 0;
}

std::string LookUp(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return Runnable(name) ? name : std::string();
    }
    const char* path = std::getenv("PATH");
    std::stringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::string candidate = (folder.empty() ? "." : folder) + "/" + name;
        if (Runnable(candidate)) {
            return candidate;
        }
    }
    return {};
}

/// Header of an executable of this machine's own word size.
struct Executable {
    ElfW(Ehdr) header{};
    bool read = false;
    std::string loader; ///< that loads its libraries; empty for a static one
};

Executable ReadExecutable(const std::string& path) {
    Executable result;
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(&result.header), sizeof result.header);
    result.read = file.good() && std::memcmp(result.header.e_ident, ELFMAG, SELFMAG) == 0;
    if (!result.read) {
        return result;
    }
    ElfW(Phdr) segment{};
    file.seekg(static_cast<std::streamoff>(result.header.e_phoff));
    for (unsigned i = 0; i < result.header.e_phnum && segment.p_type != PT_INTERP; ++i) {
        file.read(reinterpret_cast<char*>(&segment), sizeof segment);
    }
    if (file.good() && segment.p_type == PT_INTERP) {
        file.seekg(static_cast<std::streamoff>(segment.p_offset));
        std::getline(file, result.loader, '\0');
    }
    return result;
}

/// True for a program that the kernel starts with rights beyond the caller's: its loader then takes
/// no library from the environment.
bool RaisesRights(const std::string& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    const bool user = (status.st_mode & S_ISUID) != 0 && status.st_uid != getuid();
    const bool group = (status.st_mode & S_ISGID) != 0 && status.st_gid != getgid();
    return user || group ||
           (getuid() != 0 && getxattr(path.c_str(), "security.capability", nullptr, 0) > 0);
}

std::string WhyNotFound(const std::string& name) {
    std::error_code error;
    if (name.find('/') == std::string::npos) {
        return ": no such program in PATH";
    }
    if (fs::is_directory(name, error)) {
        return ": a folder; name the program in it";
    }
    return fs::exists(name, error) ? ": not executable" : ": no such program";
}

} // namespace

ProgramFile FindProgram(const std::string& name) {
    ProgramFile program;
    const std::string found = LookUp(name);
    std::error_code error;
    const fs::path resolved = found.empty() ? fs::path() : fs::canonical(found, error);
    if (found.empty() || error) {
        program.problem = name + WhyNotFound(name);
        return program;
    }
    const Executable own = ReadExecutable("/proc/self/exe");
    const Executable executable = ReadExecutable(resolved);
    program.path = resolved;
    if (!executable.read) {
        program.problem =
            name + ": not an ELF program; name the program itself, not a script around it";
    } else if (executable.header.e_ident[EI_CLASS] != own.header.e_ident[EI_CLASS] ||
               executable.header.e_machine != own.header.e_machine) {
        program.problem = name + ": built for another machine than this simulate";
    } else if (executable.loader.empty()) {
        program.problem = name + ": statically linked, the simulated board cannot stand under it";
    } else if (executable.loader != own.loader) {
        program.problem = name + ": loaded by " + executable.loader + ", not by this simulate's " +
                          own.loader + ", so the simulated board cannot stand under it";
    } else if (RaisesRights(resolved)) {
        program.problem = name + ": starts with another's rights (set-user-ID, set-group-ID or "
                                 "capabilities), which keeps the simulated board out";
    }
    return program;
}

} // namespace sim
