#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
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

TestFolder::TestFolder() : path_(testing::TempDir() + "/tavrelin-test-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("no folder for a test: " + path_);
    }
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

TestTools::TestTools() : path_("PATH", Path() + ":" + Variable("PATH").value_or("")) {}

void TestTools::Install(const std::string& tool, const std::string& script) const {
    WriteText(Path(tool), "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(Path(tool), std::filesystem::perms::owner_all);
}

std::string TextOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::map<std::string, std::string> FilesIn(const std::string& folder) {
    std::map<std::string, std::string> files;
    std::error_code ignored;
    for (const auto& file : std::filesystem::directory_iterator(folder, ignored)) {
        files[file.path().filename()] = TextOf(file.path());
    }
    return files;
}

} // namespace tavrelin
