#include "tests/support/Offspring.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace tavrelin {

namespace {

constexpr const char* kProcesses = "/proc";

bool IsNumber(const std::string& name) {
    return std::all_of(name.begin(), name.end(),
                       [](unsigned char sign) { return std::isdigit(sign) != 0; });
}

// 0 for a process that has gone meanwhile. The program's name, in brackets, may hold anything.
pid_t ParentOf(const std::filesystem::path& process) {
    std::ifstream file(process / "stat");
    std::string text;
    std::getline(file, text, '\0');
    std::istringstream fields(text.substr(std::min(text.size(), text.rfind(')') + 1)));
    std::string state;
    pid_t parent = 0;
    fields >> state >> parent;
    return parent;
}

} // namespace

Offspring::Offspring() {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
}

std::vector<pid_t> Offspring::Children() {
    std::vector<pid_t> children;
    for (const auto& entry : std::filesystem::directory_iterator(kProcesses)) {
        const std::string name = entry.path().filename();
        if (IsNumber(name) && ParentOf(entry.path()) == ::getpid()) {
            children.push_back(std::stoi(name));
        }
    }
    return children;
}

bool Offspring::IsGone(pid_t process) {
    return !std::filesystem::exists(std::filesystem::path(kProcesses) / std::to_string(process));
}

void Offspring::AwaitEnd() {
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
}

void Offspring::End() {
    for (auto left = Children(); !left.empty(); left = Children()) {
        for (const pid_t child : left) {
            ::kill(child, SIGKILL);
            ::waitpid(child, nullptr, 0);
        }
    }
}

} // namespace tavrelin
