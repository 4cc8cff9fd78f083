#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace tavrelin {

/// The audible alarm, through the sound system's command-line tools run by a shell. A sound is
/// repeated by a child process, so the caller never waits for it. Used by one thread at a time.
class Speaker {
  public:
    Speaker() = default;
    Speaker(const Speaker&) = delete;
    Speaker& operator=(const Speaker&) = delete;
    Speaker(Speaker&&) = delete;
    Speaker& operator=(Speaker&&) = delete;
    /// Stops what plays.
    ~Speaker();

    /// Switches the output on (true) or off. Whether the mixer tool did it is not known: true says
    /// only that a shell could be run, so callers may do without it.
    static bool SetMute(bool unmute);

    /// Volume in percent; refuses more than 100. True as for SetMute.
    static bool SetVolume(std::uint32_t leftPercent, std::uint32_t rightPercent);

    /// Starts a child that plays the file over and over, with `pauseUs` microseconds between, and
    /// announces both processes on standard output. Refused with a message on standard error while
    /// one plays or when there can be no child. A player that is missing or cannot play the file is
    /// not noticed here. The name goes to the shell as it stands, not quoted: blanks, quotes and
    /// the shell's other signs have their meaning there, so it must come from a trusted place.
    [[nodiscard]] bool Play(const std::string& file, std::uint32_t pauseUs);

    /// Kills the child and waits for its end; what the player has begun it plays to the end. 0 when
    /// the child was killed, negative when it could not be or nothing plays.
    int Stop();

    /// Process id of the child, -1 when nothing plays.
    [[nodiscard]] pid_t Player() const { return player_; }

  private:
    pid_t player_ = -1;
};

} // namespace tavrelin
