#include "log/Tail.h"

#include "log/Complaint.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrelin::daylog {

namespace {

constexpr std::size_t kBefore = 1 << 14; ///< bytes by which the place in a file is known again
constexpr std::size_t kHead = 256;
constexpr std::size_t kPiece = 1 << 18;

std::size_t CommonLength(const std::string& one, const std::string& other) {
    const auto length = static_cast<std::ptrdiff_t>(std::min(one.size(), other.size()));
    const auto end = std::mismatch(one.begin(), one.begin() + length, other.begin()).first;
    return static_cast<std::size_t>(end - one.begin());
}

} // namespace

/// An open file; closed with this.
class Tail::File {
  public:
    explicit File(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        struct stat status {};
        if (descriptor_ >= 0 && fstat(descriptor_, &status) == 0) {
            size_ = static_cast<std::uint64_t>(status.st_size);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }

    [[nodiscard]] bool Opened() const { return descriptor_ >= 0; }
    [[nodiscard]] std::uint64_t Size() const { return size_; }
    /// Bytes from an offset on; fewer at the end of the file, none with `failed` set.
    [[nodiscard]] std::string At(std::uint64_t offset, std::size_t length, bool& failed) const {
        std::string piece(length, '\0');
        std::size_t size = 0;
        for (ssize_t got = 1; got > 0 && size < length; size += static_cast<std::size_t>(got)) {
            got = pread(descriptor_, piece.data() + size, length - size,
                        static_cast<off_t>(offset + size));
            if (got < 0) {
                failed = true;
                return {};
            }
        }
        piece.resize(size);
        return piece;
    }

  private:
    int descriptor_;
    std::uint64_t size_ = 0;
};

Tail::Tail(std::string path, const Visit& visit)
    : path_(std::move(path)), visit_(visit), parser_(NewParser()) {}

LineParser Tail::NewParser() const {
    return LineParser([this](const Entry& entry) { visit_(entry, path_); });
}

void Tail::TellTrouble() {
    if (errno != ENOENT && !told_) {
        told_ = true;
        ComplainOfErrno(path_);
    }
}

void Tail::SkipToEnd() {
    const File file(path_);
    bool failed = !file.Opened();
    if (!failed) {
        const std::uint64_t begin = file.Size() - std::min<std::uint64_t>(file.Size(), kBefore);
        head_ = file.At(0, kHead, failed);
        before_ = file.At(begin, kBefore, failed);
        offset_ = begin + before_.size();
        if (const std::size_t newline = before_.rfind('\n');
            newline != std::string::npos || begin == 0) {
            before_.resize(newline + 1);
            offset_ = begin + before_.size();
        }
        head_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(head_.size(), offset_)));
    }
    if (failed) {
        TellTrouble();
    }
}

void Tail::ReadOn() {
    const File file(path_);
    if (!file.Opened()) {
        TellTrouble();
        return;
    }
    bool failed = false;
    const std::string there = file.At(offset_ - before_.size(), before_.size(), failed);
    const std::size_t common = CommonLength(there, before_);
    if (!failed && common < before_.size()) {
        const std::string head = file.At(0, head_.size(), failed);
        const bool sameHead = CommonLength(head, head_) == head.size();
        if (common == there.size() && sameHead) {
            return; // cut back, or being written again
        }
        GoBackTo(common, sameHead);
    }
    while (!failed) {
        const std::string piece = file.At(offset_, kPiece, failed);
        if (piece.empty()) {
            break;
        }
        parser_.Feed(piece);
        Remember(piece);
    }
    if (failed) {
        TellTrouble();
    } else {
        told_ = false;
    }
}

/// To the begin of the line in which the file differs from what it was: that many bytes of what is
/// remembered are still there. Of a file that begins as before nothing is read again.
void Tail::GoBackTo(std::size_t kept, bool sameHead) {
    const std::size_t newline = kept > 0 ? before_.rfind('\n', kept - 1) : std::string::npos;
    parser_.Finish();
    parser_ = NewParser();
    if (newline == std::string::npos && sameHead) { // cut back further than is remembered
        offset_ -= before_.size() - kept;
        before_.clear();
    } else if (newline == std::string::npos) {
        offset_ = 0;
        before_.clear();
        head_.clear();
    } else {
        offset_ -= before_.size() - (newline + 1);
        before_.resize(newline + 1);
        head_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(head_.size(), offset_)));
    }
}

void Tail::Remember(const std::string& piece) {
    head_ += piece.substr(0, kHead - std::min(head_.size(), kHead));
    offset_ += piece.size();
    before_ += piece;
    before_.erase(0, before_.size() - std::min(before_.size(), kBefore));
}

} // namespace tavrelin::daylog
