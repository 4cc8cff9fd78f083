#pragma once

#include "simulator/live/LiveFeed.h"
#include "simulator/live/LiveHand.h"
#include "simulator/live/LiveLink.h"

#include <memory>
#include <string>

namespace sim {

/// What a bench is to serve.
struct BenchSetup {
    int port = 0;           ///< 0: any that is free
    std::string pages;      ///< folder of the page's own files
    std::string cardFolder; ///< folder of the run's card
    std::string scenario;   ///< text that the run begins with
    std::string command;    ///< what repeats the run, as a shell takes it
};

/// The live bench: shows a run to browsers on this machine and takes what is done there by hand.
/// Serves the loopback only, nothing but its own files, and nobody without the token.
class Bench {
  public:
    /// Takes the port; no thread runs before Start.
    explicit Bench(const BenchSetup& setup);
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;
    ~Bench();

    /// Why there is no bench; empty when there is one.
    const std::string& Problem() const { return problem_; }
    /// What to open in a browser, with the token.
    std::string Address() const;
    /// Of the memory shared with the program.
    int Descriptor() const { return descriptor_; }

    void Start();
    /// The program is gone; pages show why.
    void End(const std::string& reason);

  private:
    class Server;

    std::string problem_;
    int descriptor_ = -1;
    std::unique_ptr<LiveFeed> feed_;
    std::unique_ptr<LiveHand> hand_;
    std::unique_ptr<Server> server_;
};

} // namespace sim
