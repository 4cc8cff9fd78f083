#pragma once

#include <string>

namespace sim {

/// The folder that holds a run's files: a given one, which stays, or a temporary one, which goes
/// with this object.
class RunRoot {
  public:
    /// given empty: a temporary folder, in memory where the machine has such a place. It is locked
    /// while it is in use, and those of runs that were killed are swept away.
    explicit RunRoot(const std::string& given);
    RunRoot(const RunRoot&) = delete;
    RunRoot& operator=(const RunRoot&) = delete;
    ~RunRoot();

    const std::string& Path() const { return path_; }
    /// Why the folder cannot be used; empty when it can. A folder with anything in it is refused,
    /// because what an earlier run left behind would change this one.
    const std::string& Problem() const { return problem_; }

  private:
    void MakeTemporary(const std::string& base);
    void Use(const std::string& given);

    std::string path_;
    std::string problem_;
    int lock_ = -1; ///< on a temporary folder
};

} // namespace sim
