#pragma once

#include "log/Entry.h"
#include "log/LineParser.h"

#include <cstdint>
#include <string>

namespace tavrelin::daylog {

/// A day's file that is read on as it grows. Holds it open only while it reads, so that its card
/// can be unmounted, and knows it again by its content: the same one on a card that was put back
/// goes on where it ended, one cut back (by 16 KB at most) goes on with its first new line, one cut
/// back further goes on when it reaches its old place again, any other begins anew.
class Tail {
  public:
    /// `visit` outlives this.
    Tail(std::string path, const Visit& visit);
    Tail(const Tail&) = delete;
    Tail& operator=(const Tail&) = delete;
    ~Tail() = default;

    /// Leaves out what is there; a last line that is not whole yet comes when it is.
    void SkipToEnd();
    /// Visits what is new. A file that is not there has nothing new; why one cannot be read is told
    /// by Complain, once.
    void ReadOn();

  private:
    class File;

    void GoBackTo(std::size_t kept, bool sameHead);
    void Remember(const std::string& piece);
    void TellTrouble();
    [[nodiscard]] LineParser NewParser() const;

    std::string path_;
    const Visit& visit_;
    LineParser parser_;
    std::uint64_t offset_ = 0; ///< of what comes next
    std::string before_;       ///< the last of what came before it
    std::string head_;         ///< the file's first bytes
    bool told_ = false;        ///< that it cannot be read
};

} // namespace tavrelin::daylog
