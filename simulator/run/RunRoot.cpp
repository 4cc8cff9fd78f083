#include "simulator/run/RunRoot.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace sim {

namespace fs = std::filesystem;

RunRoot::RunRoot(const std::string& given) {
    if (given.empty()) {
        MakeTemporary();
    } else {
        Use(given);
    }
}

RunRoot::~RunRoot() {
    if (temporary_) {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
}

void RunRoot::MakeTemporary() {
    const char* base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    std::string pattern = std::string(base) + "/tavrelin-board-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        problem_ = std::string("no temporary folder in ") + base + ": " + std::strerror(errno);
        return;
    }
    path_ = pattern;
    temporary_ = true;
}

void RunRoot::Use(const std::string& given) {
    std::error_code error;
    fs::create_directories(given, error);
    if (error || !fs::is_directory(given, error)) {
        problem_ = "--root " + given + ": cannot be made a folder";
        return;
    }
    if (!fs::is_empty(given, error) || error) {
        problem_ =
            "--root " + given + ": not empty; what an earlier run left would change this one";
        return;
    }
    path_ = fs::canonical(given, error);
    if (access(path_.c_str(), W_OK) != 0) {
        problem_ = "--root " + given + ": cannot be written to";
    }
}

} // namespace sim
