#pragma once

#include <sched.h>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tavrelin {

struct CommandResult {
    int status = 0; ///< exit status; 128 and the signal's number for a process that was killed
    std::string output;
    std::string error;
};

/// Runs a program, found as a shell finds it, to its end, with nothing on its standard input.
CommandResult RunCommand(const std::vector<std::string>& command);

/// A process that keeps a processor busy while this lives.
class BusyProcess {
  public:
    BusyProcess();
    BusyProcess(const BusyProcess&) = delete;
    BusyProcess& operator=(const BusyProcess&) = delete;
    ~BusyProcess();

    [[nodiscard]] bool IsRunning() const;

  private:
    pid_t process_;
};

/// All processes that are started while this lives share one core.
class OneCore {
  public:
    OneCore();
    OneCore(const OneCore&) = delete;
    OneCore& operator=(const OneCore&) = delete;
    ~OneCore();

  private:
    cpu_set_t before_;
};

} // namespace tavrelin
