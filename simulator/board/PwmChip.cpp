#include "simulator/board/PwmChip.h"

#include "simulator/board/KernelNumber.h"

#include <cerrno>
#include <limits>

namespace sim {
namespace {

/// Reads an unsigned 32-bit attribute; returns 0 or the errno of the kernel's parser.
int parseUnsigned(std::string_view text, std::uint32_t& value) {
    const auto number = kernelNumber(text);
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

int PwmChip::exportChannel(std::string_view number) {
    std::uint32_t channel = 0;
    if (const int error = parseUnsigned(number, channel); error != 0) {
        return error;
    }
    if (channel >= count) {
        return ENODEV;
    }
    if (at(channel).exported) {
        return EBUSY;
    }
    at(channel).exported = true;
    ++at(channel).exports;
    return 0;
}

int PwmChip::unexportChannel(std::string_view number) {
    std::uint32_t channel = 0;
    if (const int error = parseUnsigned(number, channel); error != 0) {
        return error;
    }
    if (channel >= count || !at(channel).exported) {
        return ENODEV;
    }
    at(channel).exported = false;
    return 0;
}

int PwmChip::setPeriod(unsigned channel, std::string_view text) {
    PwmOutput wanted = at(channel);
    const int error = parseUnsigned(text, wanted.period);
    return error != 0 ? error : apply(channel, wanted);
}

int PwmChip::setDuty(unsigned channel, std::string_view text) {
    PwmOutput wanted = at(channel);
    const int error = parseUnsigned(text, wanted.duty);
    return error != 0 ? error : apply(channel, wanted);
}

int PwmChip::setEnable(unsigned channel, std::string_view text) {
    PwmOutput wanted = at(channel);
    const auto number = kernelNumber(text);
    if (!number || (*number != 0 && *number != 1)) {
        return EINVAL;
    }
    wanted.enabled = *number == 1;
    return apply(channel, wanted);
}

int PwmChip::apply(unsigned channel, const PwmOutput& wanted) {
    if (wanted.period == 0 || wanted.duty > wanted.period) {
        return EINVAL;
    }
    at(channel) = wanted;
    if (onChange) {
        onChange();
    }
    return 0;
}

} // namespace sim
