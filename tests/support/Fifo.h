#pragma once

#include <cstddef>
#include <string>

namespace tavrelin {

/// A named pipe between a test and the programs that it has started. The test holds both ends, so
/// that nobody waits for somebody to open the other one.
class Fifo {
  public:
    explicit Fifo(std::string path);
    Fifo(const Fifo&) = delete;
    Fifo& operator=(const Fifo&) = delete;
    ~Fifo();

    [[nodiscard]] const std::string& Path() const { return path_; }
    [[nodiscard]] int Descriptor() const { return descriptor_; }

    /// Waits for this many bytes, or for a line and gives it without its end. Throws when nothing
    /// comes.
    [[nodiscard]] std::string Bytes(std::size_t count) const;
    [[nodiscard]] std::string Line() const;
    /// What is there by now.
    [[nodiscard]] std::string Rest() const;
    void Say(const std::string& text) const;

  private:
    void Await() const;

    std::string path_;
    int descriptor_;
};

} // namespace tavrelin
