#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace sim {

/// The folder that holds a run's files: a given one, which stays, or a temporary one, which goes
/// with this object.
class RunRoot {
  public:
    /// given empty: a temporary folder, in memory where the machine has such a place. It is locked
    /// while it is in use, and those of runs that were killed are swept away.
    /// resume: the folder of an earlier run is wanted, else a new or empty one.
    explicit RunRoot(const std::string& given, bool resume = false);
    RunRoot(const RunRoot&) = delete;
    RunRoot& operator=(const RunRoot&) = delete;
    ~RunRoot();

    const std::string& Path() const { return path_; }
    /// Where a given folder keeps the board as its run left it (board/KeptState.h).
    static std::string BoardFileIn(const std::string& given) { return given + "/board"; }
    /// The board's clock in such a file, in seconds since 1970.
    static std::optional<std::int64_t> ClockIn(const std::string& given);
    /// Why the folder cannot be used; empty when it can. A folder with anything in it is refused
    /// unless asked for, because what an earlier run left behind would change this one.
    const std::string& Problem() const { return problem_; }

  private:
    void MakeTemporary(const std::string& base);
    void Use(const std::string& given, bool resume);

    std::string path_;
    std::string problem_;
    int lock_ = -1; ///< on a temporary folder
};

} // namespace sim
