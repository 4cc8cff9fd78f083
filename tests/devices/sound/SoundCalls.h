#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavrelin {

/// Watches the calls of the code under test into the sound library, and makes single ones fail.
/// All others reach the real library. One at a time; calls of the library into itself are not
/// noticed.
class SoundCalls {
  public:
    SoundCalls();
    SoundCalls(const SoundCalls&) = delete;
    SoundCalls& operator=(const SoundCalls&) = delete;
    SoundCalls(SoundCalls&&) = delete;
    SoundCalls& operator=(SoundCalls&&) = delete;
    ~SoundCalls();

    /// The occurrence-th call of this name gives this result without reaching the library; a
    /// search finds nothing. What closes something closes it nevertheless.
    void Answer(const std::string& call, long result, unsigned occurrence = 1);
    /// The same for reading the playback switch of one channel: a success that tells `on`.
    void AnswerSwitch(int channel, int on) { switches_[channel] = on; }

    /// All calls so far that open, set up, use or close a device, as "name argument argument".
    [[nodiscard]] const std::vector<std::string>& Made() const { return made_; }
    [[nodiscard]] unsigned Count(const std::string& call) const;

    /// Devices and records that were opened or allocated and not yet given back.
    [[nodiscard]] int Unreleased() const { return unreleased_; }

    // For the stand-ins of the library's calls.
    static SoundCalls* Watching();
    std::optional<long> Meet(const std::string& call, const std::string& arguments);
    [[nodiscard]] std::optional<int> SwitchOf(int channel) const;
    void Acquired() { ++unreleased_; }
    void Released() { --unreleased_; }

  private:
    std::vector<std::string> made_;
    std::map<std::string, unsigned> counts_;
    std::map<std::pair<std::string, unsigned>, long> answers_;
    std::map<int, int> switches_;
    int unreleased_ = 0;
};

} // namespace tavrelin
