#pragma once

#include "platform/SysfsNames.h"

#include <cstdint>
#include <string>

namespace tavrelin {

/// What a read of a line answers. A write takes kLevelHigh for high and anything else for low.
inline constexpr std::uint32_t kLevelLow = 0;
inline constexpr std::uint32_t kLevelHigh = 1;
inline constexpr std::uint32_t kLevelTimeOut = 2;
inline constexpr std::uint32_t kLevelError = 3;

/// Directions of a line; kPinInputWithEdge and anything above is an input that waits for edges.
inline constexpr std::uint32_t kPinInput = 0;
inline constexpr std::uint32_t kPinOutput = 1;
inline constexpr std::uint32_t kPinInputWithEdge = 2;

/// Edges that wake a waiting reader; any other number means none.
inline constexpr std::uint32_t kEdgeNone = 0;
inline constexpr std::uint32_t kEdgeRising = 1;
inline constexpr std::uint32_t kEdgeFalling = 2;
inline constexpr std::uint32_t kEdgeBoth = 3;

/// Lines of a port, bits 0 to 31.
inline constexpr std::uint32_t kLinesPerBank = 32;

/// One line of the parallel-I/O controller, driven through the kernel's sysfs interface: exported
/// at construction, unexported at destruction. A line that is exported already makes the
/// construction fail; the object can be used on it all the same, and unexports it at its end. Holds
/// no descriptor between calls and takes no lock. A failure shows in the result and, where nothing
/// else is said, in a message on standard error.
class GpioPin {
  public:
    /// Claims line `bit` (0 to 31) of port `bank` (0 = A to 3 = D, unchecked), input without edge.
    /// Complains of another bit on standard output.
    GpioPin(std::uint32_t bank, std::uint32_t bit);
    /// The same with a direction; the edge is set only for an input that waits for edges. Complains
    /// of another bit on standard error.
    GpioPin(std::uint32_t bank, std::uint32_t bit, std::uint32_t mode, std::uint32_t edge);
    GpioPin(const GpioPin&) = delete;
    GpioPin& operator=(const GpioPin&) = delete;
    GpioPin(GpioPin&&) = delete;
    GpioPin& operator=(GpioPin&&) = delete;
    ~GpioPin();

    /// Whether the line is exported, whoever did it; claims nothing.
    static bool IsTaken(std::uint32_t bank, std::uint32_t bit);

    /// Claims the line from the kernel. Fails on a line that is exported, whoever exported it: this
    /// is the lock that keeps two owners off one line.
    bool Export();
    bool Unexport();

    /// Output for kPinOutput, input for every other mode.
    bool SetDirection(std::uint32_t mode);
    bool SetEdge(std::uint32_t edge);

    /// Drives an output high for kLevelHigh, else low. Silently false on a line that is not an
    /// output.
    bool Write(std::uint32_t level);

    /// kLevelLow, kLevelHigh, or kLevelError when the line is not exported. A value that cannot be
    /// opened reads as low, in silence.
    [[nodiscard]] std::uint32_t Read() const;

    /// Waits for the edge that was set, at most `timeoutMs` milliseconds, for ever when negative,
    /// and answers the level after it, kLevelTimeOut (also for a wait that fails) or kLevelError.
    /// Says nothing but that the line is not exported. Without edge detection answers Read() at
    /// once. Leaves its descriptor open unless it answers kLevelTimeOut.
    [[nodiscard]] std::uint32_t WaitForEdge(std::int32_t timeoutMs) const;

    /// Outcome of the construction.
    [[nodiscard]] bool Ok() const { return ok_; }
    [[nodiscard]] std::uint32_t Bank() const { return bank_; }
    [[nodiscard]] std::uint32_t Bit() const { return bit_; }
    /// Direction and edge last set.
    [[nodiscard]] std::uint32_t Mode() const { return mode_; }
    [[nodiscard]] std::uint32_t Edge() const { return edge_; }

  private:
    [[nodiscard]] std::string LineNumber() const;
    [[nodiscard]] bool IsExported() const;
    /// Complains of a line that is not exported.
    [[nodiscard]] bool ConfirmExported() const;
    bool WriteToLine(const char* attribute, const char* text, const char* complaint) const;

    // No port has a line 32: a refused pin must not release somebody else's line.
    std::uint32_t bit_ = kLinesPerBank;
    std::uint32_t bank_ = 0;
    std::string directory_ = LineDirectory(bank_, bit_);
    std::uint32_t mode_ = kPinInput;
    std::uint32_t edge_ = kEdgeNone;
    bool ok_ = false;
};

} // namespace tavrelin
