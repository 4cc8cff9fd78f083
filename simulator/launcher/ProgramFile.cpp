#include "simulator/launcher/ProgramFile.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <link.h>
#include <sstream>
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
    bool dynamic = false;
};

Executable ReadExecutable(const std::string& path) {
    Executable result;
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(&result.header), sizeof result.header);
    result.read = file.good() && std::memcmp(result.header.e_ident, ELFMAG, SELFMAG) == 0;
    if (!result.read) {
        return result;
    }
    file.seekg(static_cast<std::streamoff>(result.header.e_phoff));
    for (unsigned i = 0; i < result.header.e_phnum && file.good(); ++i) {
        ElfW(Phdr) segment{};
        file.read(reinterpret_cast<char*>(&segment), sizeof segment);
        result.dynamic = result.dynamic || (file.good() && segment.p_type == PT_INTERP);
    }
    return result;
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
    } else if (!executable.dynamic) {
        program.problem = name + ": statically linked, the simulated board cannot stand under it";
    }
    return program;
}

} // namespace sim
