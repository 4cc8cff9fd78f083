#include "tests/devices/sound/plugins/CaptureDevice.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace tavrelin {

namespace {

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr mode_t kFileMode = 0644;

void Pass(std::uint64_t nanoseconds) {
    timespec rest{static_cast<time_t>(nanoseconds / kNanosecondsPerSecond),
                  static_cast<long>(nanoseconds % kNanosecondsPerSecond)};
    while (::nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

} // namespace

AppendedFile::AppendedFile(const std::string& path)
    : descriptor_(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kFileMode)) {}

AppendedFile::~AppendedFile() {
    if (IsOpen()) {
        ::close(descriptor_);
    }
}

int AppendedFile::Append(const char* bytes, std::size_t size) const {
    while (size != 0) {
        const ssize_t written = ::write(descriptor_, bytes, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return -errno;
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return 0;
}

CaptureDevice::CaptureDevice(const PluginOptions& options)
    : file_(options.Text("file")), paced_(options.Number("paced", 0) != 0),
      dueToRunDry_(options.Has("underrun_after")),
      runsDryAfter_(options.Number("underrun_after", 0)) {}

void CaptureDevice::Prepare(std::uint64_t bufferFrames, std::uint64_t framesPerSecond) {
    bufferFrames_ = bufferFrames;
    framesPerSecond_ = framesPerSecond;
    running_ = false;
    given_ = 0;
    played_ = 0;
}

void CaptureDevice::Start() {
    running_ = true;
    KeepUp();
}

long CaptureDevice::Take(const char* samples, std::uint64_t frames) {
    if (const int error = file_.Append(samples, static_cast<std::size_t>(frames) * kFrameBytes);
        error != 0) {
        return error;
    }
    given_ += frames;
    givenInAll_ += frames;
    KeepUp();
    return static_cast<long>(frames);
}

bool CaptureDevice::RunsDry() {
    const bool now = dueToRunDry_ && givenInAll_ >= runsDryAfter_;
    dueToRunDry_ = dueToRunDry_ && !now;
    return now;
}

void CaptureDevice::KeepUp() {
    const std::uint64_t behind = bufferFrames_ / 2;
    if (running_ && given_ > played_ + behind) {
        PlayUntil(given_ - behind);
    }
}

// Rounds positions, not spans, to nanoseconds: the sum of many spans is exact.
void CaptureDevice::PlayUntil(std::uint64_t position) {
    const auto time = [this](std::uint64_t frames) {
        return frames * kNanosecondsPerSecond / framesPerSecond_;
    };
    if (paced_) {
        Pass(time(position) - time(played_));
    }
    played_ = position;
}

} // namespace tavrelin
