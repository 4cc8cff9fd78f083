#include "devices/Speaker.h"

#include "base/Console.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <initializer_list>
#include <iostream>

namespace tavrelin {

namespace {

constexpr const char* kMixer = "amixer ";
constexpr const char* kPlayer = "aplay ";
constexpr const char* kVolumeControl = "Master ";
constexpr const char* kOutputSwitch = "'Output Mixer HiFi' ";
constexpr const char* kQuietSet = "set -q ";
constexpr const char* kQuiet = "-q ";
constexpr std::uint32_t kFullVolume = 100; // percent
constexpr pid_t kNoPlayer = -1;

// The tool's own exit status is not looked at: an alarm that cannot be made louder still sounds.
bool RunInShell(const std::string& command) {
    return std::system(command.c_str()) >= 0;
}

void PrintProcesses(const char* where, const char* otherName, pid_t other) {
    PrintLineAndFlush("In " + std::string(where) +
                      " Process: Own pid = " + std::to_string(::getpid()) + " and " + otherName +
                      " pid = " + std::to_string(other));
}

// Who stops the child with a signal catches those that ask to end; the child inherits that, and
// would outlive a caller that was killed. While the command runs, system() has SIGINT ignored: that
// one ends the child in a pause.
void EndBySignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_DFL);
    }
}

// The life of the child, which only a signal ends.
[[noreturn]] void RepeatForEver(const std::string& command, std::uint32_t pauseUs) {
    EndBySignals();
    PrintProcesses("Child", "Parent", ::getppid());
    while (true) {
        if (!RunInShell(command)) {
            std::cerr << "Speaker: error in player\n";
        }
        ::usleep(pauseUs);
    }
}

// A long-lived instrument leaves no dead children behind. This child dies at once: it was killed.
void Reap(pid_t child) {
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace

Speaker::~Speaker() {
    Stop();
}

bool Speaker::SetMute(bool unmute) {
    return RunInShell(std::string(kMixer) + kQuietSet + kOutputSwitch +
                      (unmute ? "unmute" : "mute"));
}

bool Speaker::SetVolume(std::uint32_t leftPercent, std::uint32_t rightPercent) {
    if (leftPercent > kFullVolume || rightPercent > kFullVolume) {
        return false;
    }
    return RunInShell(std::string(kMixer) + kQuietSet + kVolumeControl +
                      std::to_string(leftPercent) + "%," + std::to_string(rightPercent) + "%");
}

bool Speaker::Play(const std::string& file, std::uint32_t pauseUs) {
    if (player_ != kNoPlayer) {
        std::cerr << "Speaker: already in play\n";
        return false;
    }
    // Text still in the buffer would be printed by the child once more.
    std::cout.flush();
    const pid_t child = ::fork();
    if (child == 0) {
        RepeatForEver(std::string(kPlayer) + kQuiet + file, pauseUs);
    }
    if (child < 0) {
        std::cerr << "Speaker: error in play fork\n";
        return false;
    }
    PrintProcesses("Parent", "Child", child);
    player_ = child;
    return true;
}

int Speaker::Stop() {
    if (player_ < 0) {
        return player_;
    }
    // The child has nothing to put in order, and must not be able to refuse.
    const int killed = ::kill(player_, SIGKILL);
    if (killed == 0) {
        Reap(player_);
    }
    player_ = kNoPlayer;
    return killed;
}

} // namespace tavrelin
