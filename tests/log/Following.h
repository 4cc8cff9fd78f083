#pragma once

#include "tests/support/Fifo.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tavrelin {

/// `tavrelin-log follow`, ended with this.
class Follower {
  public:
    using Words = std::vector<std::string>;

    /// Its standard output goes to a file or pipe, its standard error to a pipe.
    Follower(Words words, const std::string& output, const std::string& error) {
        words.insert(words.begin(), {InBuild("bin/tavrelin-log"), "follow"});
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(::open(output.c_str(), O_WRONLY), STDOUT_FILENO);
            ::dup2(::open(error.c_str(), O_WRONLY), STDERR_FILENO);
            ::execv(arguments.front(), arguments.data());
            ::_exit(127);
        }
    }
    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;
    ~Follower() {
        if (process_ > 0) {
            Signal(SIGTERM);
            ::waitpid(process_, nullptr, 0);
        }
    }

    /// Waits until it has read what there is and sleeps until something happens.
    void AwaitSleep() const {
        Await("it does not wait", [this] {
            std::string notices;
            for (const auto& descriptor : std::filesystem::directory_iterator(Proc("fdinfo"))) {
                notices += TextOf(descriptor.path());
            }
            return Proc("stat", ") S ") && notices.find("inotify wd") != std::string::npos;
        });
    }
    void Signal(int signal) const { ::kill(process_, signal); }
    /// No file of its becomes larger than this from now on.
    void LimitFiles(rlim_t bytes) const {
        const rlimit limit{bytes, RLIM_INFINITY};
        ::prlimit(process_, RLIMIT_FSIZE, &limit, nullptr);
    }
    int AwaitEnd() {
        int status = 0;
        Await("it does not end", [&] { return ::waitpid(process_, &status, WNOHANG) != 0; });
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    std::vector<std::string> OpenFiles() const {
        std::vector<std::string> files;
        for (const auto& descriptor : std::filesystem::directory_iterator(Proc("fd"))) {
            files.push_back(std::filesystem::read_symlink(descriptor));
        }
        return files;
    }
    /// How often it has slept.
    std::string Sleeps() const {
        return LinesWith(TextOf(Proc("status")), "voluntary_ctxt_switches").front();
    }

  private:
    std::string Proc(const std::string& name) const {
        return "/proc/" + std::to_string(process_) + "/" + name;
    }
    bool Proc(const std::string& name, const std::string& text) const {
        return TextOf(Proc(name)).find(text) != std::string::npos;
    }
    template <typename Condition>
    static void Await(const std::string& otherwise, Condition condition) {
        for (int tries = 0; !condition(); ++tries) {
            if (tries == 30'000) {
                throw std::runtime_error(otherwise);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    pid_t process_ = -1;
};

inline std::string Result(const std::string& time, const std::string& chlorine = "171.482") {
    return time + ",,,0.1," + chlorine + ",20000,3e+06,2.3871e+06\n";
}

inline std::string Json(const std::string& time, const std::string& chlorine = "171.482") {
    return R"({"time":")" + time + R"(","absorbance":0.1,"chlorine":)" + chlorine +
           R"(,"dark":20000,"reference":3e+06,"sample":2.3871e+06})";
}

class Following : public testing::Test {
  protected:
    Following() { std::filesystem::create_directory(card_); }

    /// Begins to follow, and comes back when it waits.
    Follower& Follow(std::vector<std::string> words = {}) {
        words.push_back(card_);
        follower_.emplace(words, output_.Path(), error_.Path());
        follower_->AwaitSleep();
        return *follower_;
    }
    static void Append(const std::string& path, const std::string& text) {
        std::ofstream(path, std::ios::app) << text;
    }
    /// What is printed next.
    std::string Next() { return output_.Line(); }
    /// Holds that nothing has been printed: what comes next is a record made now.
    void ExpectNothingNew(const std::string& path) {
        Append(path, Result("2026-03-07 23:59.59", "1e+09"));
        EXPECT_EQ(Next(), Json("2026-03-07T23:59:59", "1e+09"));
    }

    TestFolder folder_;
    const std::string card_ = folder_.Path("card");
    const std::string day_ = card_ + "/2026-03-07_logfile.csv";
    const std::string next_ = card_ + "/2026-03-08_logfile.csv";
    Fifo output_{folder_.Path("output")};
    Fifo error_{folder_.Path("error")};
    std::optional<Follower> follower_;
};

} // namespace tavrelin
