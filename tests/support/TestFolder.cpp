#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace tavrelin {

namespace {

std::optional<std::string> Variable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

} // namespace

Environment::Environment(std::string name, const std::string& value)
    : name_(std::move(name)), before_(Variable(name_)) {
    setenv(name_.c_str(), value.c_str(), 1);
}

Environment::~Environment() {
    if (before_) {
        setenv(name_.c_str(), before_->c_str(), 1);
    } else {
        unsetenv(name_.c_str());
    }
}

TestFolder::TestFolder() : path_(testing::TempDir() + "/tavrelin-sound-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("no folder for a test: " + path_);
    }
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace tavrelin
