#pragma once

#include "simulator/live/LiveLink.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace sim {

/// What pages see of a run: looks at it twenty times a second in a thread of its own, and keeps
/// what changed in numbered frames for readers of any speed. All texts are JSON or server-sent
/// events.
class LiveFeed {
  public:
    /// cardFolder: where the files of the run's card lie on this machine.
    LiveFeed(LiveLink& link, std::string cardFolder);
    LiveFeed(const LiveFeed&) = delete;
    LiveFeed& operator=(const LiveFeed&) = delete;
    ~LiveFeed();

    void Start();
    /// Something was done by hand: the command, as JSON.
    void Tell(double seconds, const std::string& command);
    /// The program is gone.
    void End(const std::string& reason);
    /// Lets every reader go.
    void Stop();
    bool Ended() const { return ended_; }

    /// All there is to know at this moment; waits some time for the run to tell its first state.
    std::string All();
    /// The events after a frame, which is then the last one seen; 0, and a frame that is no longer
    /// kept, is answered with everything. Waits up to a second, then gives a comment; empty when
    /// there will be no more.
    std::string Next(std::uint64_t& seen);

  private:
    using Figures = std::deque<LiveFigure>;

    void Run();
    void Look();
    void LookAtState();
    void LookAtCard();
    void Add(const char* event, const std::string& data);
    std::string State() const;
    std::string Whole() const;

    LiveLink& link_;
    std::string cardFolder_;
    std::thread thread_;
    mutable std::mutex mutex_; ///< of all below
    std::condition_variable changed_;
    bool stopped_ = false;
    std::atomic<bool> ended_{false};
    std::string reason_;
    std::uint32_t published_ = 0;
    std::string state_; ///< the members that the run tells
    std::string shown_; ///< the state of the last frame
    std::string file_;
    std::uint64_t bytes_ = 0;
    std::string log_;
    std::uint64_t seenReadings_ = 0;
    std::uint64_t seenResults_ = 0;
    std::uint64_t seenConsole_ = 0;
    Figures readings_;
    Figures results_;
    std::string console_;
    std::deque<std::string> done_;
    std::string frame_; ///< under way
    std::deque<std::string> frames_;
    std::uint64_t last_ = 0; ///< number of the last frame
};

/// A text as JSON, whatever its bytes are.
std::string JsonText(const std::string& text);

} // namespace sim
