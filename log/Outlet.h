#pragma once

#include <csignal>
#include <string>

namespace tavrelin::daylog {

/// Where a feed goes: standard output, a file that is appended to, or one that is written anew each
/// time. While it cannot be written Complain tells so once, and nothing half-written stays. One at
/// a time: from its begin on, INT and TERM end the waiting instead of the process.
class Outlet {
  public:
    /// No path: standard output.
    Outlet(std::string path, bool anew);
    Outlet(const Outlet&) = delete;
    Outlet& operator=(const Outlet&) = delete;
    ~Outlet();

    /// False, told by Complain, when the file cannot be opened.
    bool Open();

    /// Appends a text; waits for a reader that is slow.
    void Write(const std::string& text);
    /// Makes a text all that the file holds, at one stroke.
    void Replace(const std::string& text);

    /// Waits until there is something to read from `notices` or to learn of `mounts`; false when
    /// the process is to end, because it was told so or because nobody reads any more.
    bool Await(int notices, int mounts);
    [[nodiscard]] bool ReaderGone() const { return gone_; }

  private:
    bool WaitForRoom();
    [[nodiscard]] bool Appends() const;
    void TellTrouble();

    std::string path_;
    bool anew_;
    int descriptor_ = -1;
    bool told_ = false;
    bool gone_ = false;
    std::string written_; ///< by Replace
    sigset_t signals_{};  ///< that the process began with
};

} // namespace tavrelin::daylog
