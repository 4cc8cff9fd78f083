#pragma once

#include "simulator/board/Nanoseconds.h"
#include "simulator/kernel/BufferedFile.h"

#include <concepts>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// One operation on the simulated board.
struct Event {
    Nanoseconds at = 0;
    unsigned thread = 0; ///< 0: the world, not the program
    std::string operation;
    std::string path; ///< "-" where there is none
    std::string data; ///< "-" where there is none
};

/// Writes down what the program asks of the board and what the board does by itself: one line each
/// of board time in microseconds, thread, operation, path and data. Equal reads in a row are
/// written once, and then how often they came again.
class EventLog {
  public:
    std::function<Nanoseconds()> now;
    std::function<unsigned()> thread;

    EventLog() = default;
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;
    ~EventLog() { Finish(); }

    /// Writes to a file from now on, replacing it, by way of a buffer that lives as long as this
    /// object; false when the file cannot be opened.
    bool WriteTo(const std::string& path, FileBuffer& buffer) { return file_.Open(path, buffer); }
    /// Keeps the events in memory from now on, repeated reads one by one.
    void Keep() { keeping_ = true; }
    const std::vector<Event>& Kept() const { return kept_; }
    void Clear() { kept_.clear(); }
    bool Active() const { return keeping_ || file_.IsOpen(); }

    void Add(std::string_view operation, std::string_view path, std::string_view data = "-");
    /// The same with data that is made only where it is written down.
    template <std::invocable Data>
    void Add(std::string_view operation, std::string_view path, Data data) {
        if (Active()) {
            Add(operation, path, std::string_view(data()));
        }
    }
    /// The same, told of the world instead of a thread.
    void AddWorld(std::string_view operation, std::string_view path, std::string_view data);
    /// Writes nothing more: the file is another process's.
    void Abandon();
    /// The console's text is about to follow on the same stream.
    void MakeWay() {
        if (file_.Shared()) {
            file_.Flush();
        }
    }
    /// Hands all lines to the file, but the end of repeats that may go on.
    void Flush() { file_.Flush(); }
    /// Hands everything to the file: there will be no more.
    void Finish();

    /// A text in quotes, with \n, \t, \\, \" and \xNN for what does not print.
    static std::string Quoted(std::string_view text);
    static std::string Line(const Event& event);

  private:
    void Record(Event event);
    void EndRepeats();

    BufferedFile file_;
    bool keeping_ = false;
    std::vector<Event> kept_;
    Event last_;
    Nanoseconds repeatedAt_ = 0;
    std::size_t repeats_ = 0;
};

} // namespace sim
