#include "tests/simulator/LiveBench.h"

#include "tests/support/TestFolder.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <regex>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tavrelin {
namespace {

void Redirect(const std::string& path, int descriptor) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    ::dup2(file, descriptor);
}

std::vector<char*> Pointers(Words& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

LiveBench::LiveBench(const std::string& folder, const std::string& name, const Words& options,
                     Words program)
    : errorFile_(folder + "/" + name + ".errors") {
    Words command{Binary("simulate"), "--serve"};
    command.insert(command.end(), options.begin(), options.end());
    command.insert(command.end(), {"--events", folder + "/" + name + ".events", "--root",
                                   folder + "/" + name, "--"});
    if (program.empty()) {
        program = {Binary("tavrelin")};
    }
    command.insert(command.end(), program.begin(), program.end());
    const std::vector<char*> arguments = Pointers(command);
    process_ = ::fork();
    if (process_ == 0) {
        Redirect(folder + "/" + name + ".console", STDOUT_FILENO);
        Redirect(errorFile_, STDERR_FILENO);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    const std::regex address("simulate: the bench is at http://(127\\.0\\.0\\.1:[0-9]+)/"
                             "\\?token=([0-9a-f]{32})\n");
    for (int i = 0; i < 1000 && host_.empty(); ++i) {
        const std::string said = Said();
        if (std::smatch match; std::regex_search(said, match, address)) {
            host_ = match[1];
            token_ = match[2];
        } else if (::waitpid(process_, nullptr, WNOHANG) == process_) {
            process_ = -1;
            break;
        }
        Wait(10);
    }
    EXPECT_NE(host_, "") << Said();
}

LiveBench::~LiveBench() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

std::string LiveBench::Said() const {
    return TextOf(errorFile_);
}

void LiveBench::Wait(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::pair<int, std::string> LiveBench::Get(const std::string& path) const {
    httplib::Client client("http://" + host_);
    const auto result = client.Get(path + "?token=" + token_);
    return result ? std::pair{result->status, result->body} : std::pair{0, std::string()};
}

std::pair<int, std::string> LiveBench::Post(const std::string& body) const {
    httplib::Client client("http://" + host_);
    const auto result = client.Post("/do", {{"X-Token", token_}}, body, "application/json");
    return result ? std::pair{result->status, result->body} : std::pair{0, std::string()};
}

double LiveBench::Do(const Json& command) const {
    const auto [status, body] = Post(command.dump());
    EXPECT_EQ(status, 200) << command << body;
    return status == 200 ? Json::parse(body).at("at").get<double>() : -1.0;
}

LiveBench::Json LiveBench::State() const {
    const auto [status, body] = Get("/state");
    EXPECT_EQ(status, 200) << body;
    return Json::parse(body, nullptr, false);
}

LiveBench::Json LiveBench::AwaitEnd() const {
    return StateWith([](const Json& state) { return state.at("ended") != ""; });
}

int LiveBench::Interrupt() {
    int status = -1;
    ::kill(process_, SIGTERM);
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace tavrelin
