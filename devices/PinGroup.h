#pragma once

#include "devices/Wiring.h"
#include "platform/GpioPin.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tavrelin {

/// Output lines that belong together: claimed, set up, driven and released in the order in which
/// they were given. A failure shows in the result; what the line itself says goes to the console.
class PinGroup {
  public:
    PinGroup() = default;
    PinGroup(const PinGroup&) = delete;
    PinGroup& operator=(const PinGroup&) = delete;
    PinGroup(PinGroup&&) = delete;
    PinGroup& operator=(PinGroup&&) = delete;
    ~PinGroup() { Release(); }

    /// Releases the lines it has and claims these. Then makes each an output without edge, at
    /// `level` where one is given, up to the first step that fails. The claims themselves are not
    /// looked at: a line that somebody else has exported serves as well, and is unexported with
    /// the others.
    bool Take(std::span<const wiring::Line> lines, std::optional<std::uint32_t> level = {});

    /// Drives the lines to a number, lowest bit first, up to the first that cannot be written.
    /// False without lines.
    bool Write(std::uint32_t number);

    /// One of the lines that were taken, counted from 0.
    [[nodiscard]] GpioPin* At(std::size_t index) { return pins_[index].get(); }

  private:
    void Release();

    std::vector<std::unique_ptr<GpioPin>> pins_;
};

} // namespace tavrelin
