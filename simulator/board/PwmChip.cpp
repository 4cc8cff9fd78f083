#include "simulator/board/PwmChip.h"

#include "simulator/board/KernelNumber.h"

#include <cerrno>
#include <cmath>

namespace sim {
namespace {

/// What the instrument sets: light, pump at its last rate, stirrer, open valve.
constexpr std::array<PwmOutput, PwmChip::kCount> kPrograms{{
    {.period = 1'000'000, .duty = 300'000},
    {.period = 625'000, .duty = 312'500},
    {.period = 1'562'500, .duty = 781'250},
    {.period = 1'000'000, .duty = 1'000'000},
}};

} // namespace

double PwmOutput::DutyPercent() const {
    return Pulsing() ? 100.0 * static_cast<double>(duty) / static_cast<double>(period) : 0.0;
}

double PwmOutput::Frequency() const {
    return Pulsing() ? std::round(1e12 / static_cast<double>(period)) / 1e3 : 0.0;
}

PwmChip::PwmChip(const ChannelsSetup& setup) {
    for (const unsigned channel : setup.exported) {
        At(channel) = kPrograms.at(channel);
        At(channel).exported = true;
    }
    for (const unsigned channel : setup.enabled) {
        At(channel).enabled = true;
    }
}

int PwmChip::ExportChannel(std::string_view number) {
    std::uint32_t channel = 0;
    if (const int error = KernelNumber(number, channel); error != 0) {
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
    if (const int error = KernelNumber(number, channel); error != 0) {
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
    const int error = KernelNumber(text, wanted.period);
    return error != 0 ? error : Apply(channel, wanted);
}

int PwmChip::SetDuty(unsigned channel, std::string_view text) {
    PwmOutput wanted = At(channel);
    const int error = KernelNumber(text, wanted.duty);
    return error != 0 ? error : Apply(channel, wanted);
}

int PwmChip::SetEnable(unsigned channel, std::string_view text) {
    PwmOutput wanted = At(channel);
    std::int32_t number = 0;
    if (const int error = KernelNumber(text, number); error != 0) {
        return error;
    }
    if (number != 0 && number != 1) {
        return EINVAL;
    }
    wanted.enabled = number == 1;
    return Apply(channel, wanted);
}

int PwmChip::SetPolarity(unsigned channel, std::string_view text) {
    PwmOutput wanted = At(channel);
    text = WithoutNewline(text);
    wanted.inversed = text == "inversed";
    return wanted.inversed || text == "normal" ? Apply(channel, wanted) : EINVAL;
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
