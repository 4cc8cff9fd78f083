#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace sim {

/// Lines on their way to a file. It may lie in memory that outlives the program, so that the last
/// lines before a crash can still be handed on.
struct FileBuffer {
    static constexpr std::size_t kSize = 1 << 16;

    std::atomic<std::uint64_t> offset{0}; ///< where in the file the text goes
    std::atomic<std::uint32_t> used{0};
    std::atomic<int> error{0}; ///< errno of the write that failed; the file ends at offset then
    std::array<char, kSize> text{};
};

/// The name that stands for standard output.
inline constexpr const char* kStandardOutput = "-";

/// A file on this machine that is written line by line, by way of a buffer. One that takes no more
/// (a full disk) ends with a whole line, and its buffer tells why.
class BufferedFile {
  public:
    BufferedFile() = default;
    BufferedFile(const BufferedFile&) = delete;
    BufferedFile& operator=(const BufferedFile&) = delete;
    ~BufferedFile();

    /// Replaces the file, or goes on with standard output; false when it cannot be opened. The
    /// buffer lives as long as this object.
    bool Open(const std::string& path, FileBuffer& buffer);
    /// True for standard output.
    bool Shared() const { return shared_; }
    bool IsOpen() const { return file_ >= 0; }
    /// Adds whole lines.
    void Put(std::string_view lines);
    /// Hands what the buffer holds to the file.
    void Flush();
    /// Writes nothing more: the file is another process's.
    void Abandon() { file_ = -1; }

  private:
    void WriteOut(std::string_view text);

    int file_ = -1;
    bool shared_ = false; ///< others write to it as well
    FileBuffer* buffer_ = nullptr;
};

} // namespace sim
