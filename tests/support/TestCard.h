#pragma once

#include "tests/support/TestFolder.h"

#include <string>

namespace tavrelin {

/// A sound card for one test, without hardware: the sound library's whole configuration with a
/// mixer and a playback device of our own (plugins/), kept in a folder that goes with this object.
/// The library and the tools that the test starts see it. One at a time.
///
/// Unless told otherwise it has the two elements that the instrument uses, switched off and at 20
/// of 0 to 63, and plays as fast as it is given samples.
class TestCard {
  public:
    TestCard();
    TestCard(const TestCard&) = delete;
    TestCard& operator=(const TestCard&) = delete;
    ~TestCard();

    /// The mixer's controls, as plugins/MixerState.h has them.
    void SetMixer(const std::string& controls) const;
    [[nodiscard]] std::string Mixer() const;

    /// Options of the playback device, as plugins/CapturePlugin.cpp tells them.
    void SetPlayback(const std::string& options);
    /// All bytes that were played.
    [[nodiscard]] std::string Played() const;
    /// Where they go from now on.
    void PlayInto(const std::string& path);

    void TakeAwayMixer();
    void TakeAwayPlayback();

    /// A file in this card's folder.
    [[nodiscard]] std::string Path(const std::string& name) const { return folder_.Path(name); }

  private:
    void Configure() const;

    TestFolder folder_;
    Environment configuration_;
    std::string capture_;
    std::string options_;
    bool hasMixer_ = true;
    bool hasPlayback_ = true;
};

/// What the mixer's file says when both channels of switch and volume have these values.
std::string MixerText(const std::string& switches, const std::string& volumes);

} // namespace tavrelin
