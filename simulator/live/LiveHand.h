#pragma once

#include "simulator/live/LiveFeed.h"
#include "simulator/live/LiveLink.h"

#include <mutex>
#include <string>

namespace sim {

/// Hands commands from pages to the run, one at a time, and keeps those that change it.
class LiveHand {
  public:
    /// scenario: the text that the run began with. command: what repeats the run, as a shell takes
    /// it.
    LiveHand(LiveLink& link, LiveFeed& feed, const std::string& scenario,
             const std::string& command);

    /// An HTTP status and what goes with it, as JSON.
    struct Answer {
        int status = 200;
        std::string json;
    };

    /// Does what a request's body asks for: {"at": seconds}, or {"error": why not}.
    Answer Do(const std::string& body);
    /// The scenario that repeats the run as it went so far, with all that was done by hand.
    std::string Scenario() const;

  private:
    /// The run's answer; empty for a command that it did not come to in time.
    LiveLink::Stage Post(const std::string& command);

    LiveLink& link_;
    LiveFeed& feed_;
    std::mutex posting_;
    mutable std::mutex keeping_;
    std::string scenario_;
};

} // namespace sim
