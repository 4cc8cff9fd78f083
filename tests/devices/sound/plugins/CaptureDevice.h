#pragma once

#include "tests/devices/sound/plugins/PluginOptions.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace tavrelin {

/// A file that is only ever appended to; a FIFO will do.
class AppendedFile {
  public:
    explicit AppendedFile(const std::string& path);
    AppendedFile(const AppendedFile&) = delete;
    AppendedFile& operator=(const AppendedFile&) = delete;
    AppendedFile(AppendedFile&&) = delete;
    AppendedFile& operator=(AppendedFile&&) = delete;
    ~AppendedFile();

    [[nodiscard]] bool IsOpen() const { return descriptor_ >= 0; }
    /// 0 or a negated errno.
    [[nodiscard]] int Append(const char* bytes, std::size_t size) const;

  private:
    int descriptor_;
};

/// Plays by appending what it is given to a file, two channels of 16 bits. Stays half a buffer
/// behind what it was given, so that it never runs dry by itself. Positions are in frames since it
/// was prepared.
class CaptureDevice {
  public:
    static constexpr unsigned int kFrameBytes = 4;

    /// Options as CapturePlugin.cpp tells them.
    explicit CaptureDevice(const PluginOptions& options);

    [[nodiscard]] bool HasFile() const { return file_.IsOpen(); }

    /// Ready for a new sound.
    void Prepare(std::uint64_t bufferFrames, std::uint64_t framesPerSecond);
    /// From now on time passes.
    void Start();
    /// Frames taken, or a negated errno.
    long Take(const char* samples, std::uint64_t frames);
    void PlayToTheEnd() { PlayUntil(given_); }

    /// Frames played so far.
    [[nodiscard]] std::uint64_t Played() const { return played_; }
    /// True once, when the device was told to run dry now.
    bool RunsDry();

  private:
    void KeepUp();
    void PlayUntil(std::uint64_t position);

    AppendedFile file_;
    bool paced_;
    bool dueToRunDry_;
    std::uint64_t runsDryAfter_; // frames in all
    std::uint64_t givenInAll_ = 0;
    std::uint64_t bufferFrames_ = 0;
    std::uint64_t framesPerSecond_ = 1;
    bool running_ = false;
    std::uint64_t given_ = 0;
    std::uint64_t played_ = 0;
};

} // namespace tavrelin
