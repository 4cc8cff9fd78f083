#include "devices/PinGroup.h"

#include <algorithm>

namespace tavrelin {

namespace {

bool MakeOutput(GpioPin& pin, std::optional<std::uint32_t> level) {
    return pin.SetDirection(kPinOutput) && pin.SetEdge(kEdgeNone) && (!level || pin.Write(*level));
}

} // namespace

bool PinGroup::Take(std::span<const wiring::Line> lines, std::optional<std::uint32_t> level) {
    // First, because a line that is still ours would be refused as already used.
    Release();
    for (const wiring::Line& line : lines) {
        pins_.push_back(std::make_unique<GpioPin>(line.bank, line.bit));
    }
    return std::all_of(pins_.begin(), pins_.end(),
                       [level](const auto& pin) { return MakeOutput(*pin, level); });
}

bool PinGroup::Write(std::uint32_t number) {
    bool written = !pins_.empty();
    for (std::size_t bit = 0; written && bit < pins_.size(); ++bit) {
        written = pins_[bit]->Write(number >> bit & 1U);
    }
    return written;
}

// One by one, because a container leaves the order to the library.
void PinGroup::Release() {
    for (std::unique_ptr<GpioPin>& pin : pins_) {
        pin.reset();
    }
    pins_.clear();
}

} // namespace tavrelin
