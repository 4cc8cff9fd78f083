#include "simulator/board/PwmChip.h"

#include "simulator/board/KernelNumber.h"

#include <cerrno>
#include <limits>

namespace sim {
namespace {

/// Reads an unsigned 32-bit attribute; returns 0 or the errno of the kernel's parser.
int ParseUnsigned(std::string_view text, std::uint32_t& value) {
    const auto number = KernelNumber(text);
    if (!number || *number < 0) {
        return EINVAL;
    }
    if (*number > std::numeric_limits<std::uint32_t>::max()) {
        return ERANGE;
    }
    value = static_cast<std::uint32_t>(*number);
    return 0;
}

} // namespace

PwmChip::PwmChip(const std::vector<unsigned>& exported) {
    for (const unsigned channel : exported) {
        At(channel).exported = true;
    }
}

int PwmChip::ExportChannel(std::string_view number) {
    std::uint32_t channel = 0;
    if (const int error = ParseUnsigned(number, channel); error != 0) {
        return error;
    }
    if (channel >= kCount) {
        return ENODEV;
    }
    if (At(channel).exported) {
        return EBUSY;
    }
    At(channel).exported = true;
    ++At(channel).exports;
    return 0;
}

int PwmChip::UnexportChannel(std::string_view number) {
    std::uint32_t channel = 0;
    if (const int error = ParseUnsigned(number, channel); error != 0) {
        return error;
    }
    if (channel >= kCount || !At(channel).exported) {
        return ENODEV;
    }
    At(channel).exported = false;
    return 0;
}

int PwmChip::SetPeriod(unsigned channel, std::string_view text) {
    PwmOutput wanted = At(channel);
    const int error = ParseUnsigned(text, wanted.period);
    return error != 0 ? error : Apply(channel, wanted);
}

int PwmChip::SetDuty(unsigned channel, std::string_view text) {
    PwmOutput wanted = At(channel);
    const int error = ParseUnsigned(text, wanted.duty);
    return error != 0 ? error : Apply(channel, wanted);
}

int PwmChip::SetEnable(unsigned channel, std::string_view text) {
    PwmOutput wanted = At(channel);
    const auto number = KernelNumber(text);
    if (!number || (*number != 0 && *number != 1)) {
        return EINVAL;
    }
    wanted.enabled = *number == 1;
    return Apply(channel, wanted);
}

int PwmChip::Apply(unsigned channel, const PwmOutput& wanted) {
    if (wanted.period == 0 || wanted.duty > wanted.period) {
        return EINVAL;
    }
    At(channel) = wanted;
    if (onChange) {
        onChange();
    }
    return 0;
}

} // namespace sim
