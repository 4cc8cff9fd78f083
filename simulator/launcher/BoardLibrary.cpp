#include "simulator/launcher/BoardLibrary.h"

#include <array>
#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace sim {
namespace {

namespace fs = std::filesystem;

/// In the forked process: loads the library and tells why that failed.
[[noreturn]] void TryToLoad(const std::string& name, int told) {
    for (const int signal : {SIGBUS, SIGSEGV}) {
        std::signal(signal, SIG_DFL); // a sanitizer's report would be no help
    }
    const bool loaded = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL) != nullptr;
    const std::string why = loaded ? "" : std::string(dlerror()).substr(name.size() + 2);
    _exit(write(told, why.data(), why.size()) < 0 || !loaded ? 1 : 0);
}

} // namespace

std::string Beside(const char* place) {
    std::error_code error;
    const fs::path own = fs::canonical("/proc/self/exe", error);
    return (own.parent_path().parent_path() / place).string();
}

BoardLibrary::BoardLibrary() : path_(Beside("lib/libsimulated-board.so")) {
    if (path_.find_first_of(" :$\n") != std::string::npos) {
        descriptor_ = open(path_.c_str(), O_RDONLY);
    }
}

BoardLibrary::~BoardLibrary() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::string BoardLibrary::LoaderName() const {
    return descriptor_ < 0 ? path_ : "/proc/self/fd/" + std::to_string(descriptor_);
}

std::string BoardLibrary::Problem() const {
    std::array<int, 2> told{-1, -1};
    if (pipe2(told.data(), O_CLOEXEC) != 0) {
        return std::strerror(errno);
    }
    const pid_t child = fork();
    if (child == 0) {
        TryToLoad(LoaderName(), told[1]);
    }
    close(told[1]);
    std::array<char, 4096> text{};
    const ssize_t size = read(told[0], text.data(), text.size() - 1);
    close(told[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status == 0) {
        return child < 0 ? std::strerror(errno) : "";
    }
    return path_ + ": " + (size > 0 ? text.data() : "damaged") + "; build the whole project";
}

} // namespace sim
