#pragma once

#include "tests/simulator/Launcher.h"

#include <httplib.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/types.h>
#include <utility>

namespace tavrelin {

/// `simulate --serve` on a program, and a browser's way to it; ended with this object. Its console,
/// events and run folder lie in the given folder.
class LiveBench {
  public:
    using Json = nlohmann::json;

    /// name: of this run's files in the folder. program: the instrument itself, unless named.
    LiveBench(const std::string& folder, const std::string& name, const Words& options,
              Words program = {});
    LiveBench(const LiveBench&) = delete;
    LiveBench& operator=(const LiveBench&) = delete;
    ~LiveBench();

    /// "127.0.0.1:PORT", and the token; empty when no address was printed.
    const std::string& Host() const { return host_; }
    const std::string& Token() const { return token_; }
    int Port() const { return std::stoi(host_.substr(host_.find(':') + 1)); }
    /// What it says on standard error so far.
    std::string Said() const;
    pid_t Process() const { return process_; }

    /// Status and body.
    std::pair<int, std::string> Get(const std::string& path) const;
    std::pair<int, std::string> Post(const std::string& body) const;
    /// A command that must be obeyed: at which board time it takes effect.
    double Do(const Json& command) const;
    Json State() const;
    /// The state once it fulfils a condition, or the last one after ten seconds.
    template <typename Condition>
    Json StateWith(Condition fulfilled) const {
        Json state;
        for (int i = 0; i < 500; ++i) {
            state = State();
            if (fulfilled(state)) {
                break;
            }
            Wait(20);
        }
        return state;
    }
    Json AwaitEnd() const;
    static void Wait(int milliseconds);

    /// Ends it; its exit status.
    int Interrupt();

  private:
    std::string errorFile_;
    pid_t process_ = -1;
    std::string host_;
    std::string token_;
};

} // namespace tavrelin
