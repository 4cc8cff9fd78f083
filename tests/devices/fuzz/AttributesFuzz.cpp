// Feeds arbitrary bytes as texts of attributes to what reads them: lines, channels and the board's
// own converter. Run by scripts/fuzz; attributes/ holds what a fresh run begins with.

#include "devices/ADC.h"
#include "platform/AttributeFile.h"
#include "platform/GpioPin.h"
#include "platform/PwmChannel.h"

#include "tests/support/FuzzInput.h"

#include <fcntl.h>
#include <sys/syscall.h>

#include <cmath>
#include <cstdint>
#include <iostream>
#include <sstream>

namespace {

using namespace tavrelin;

std::string firstText;
std::string secondText;

} // namespace

// The board: each attribute is there and holds the fuzzer's text.
extern "C" int access(const char* /*path*/, int /*mode*/) noexcept {
    return 0;
}

extern "C" int open64(const char* path, int flags, ...) {
    if (std::string_view(path).starts_with("/sys/")) {
        const bool scale = std::string_view(path).ends_with("scale");
        const MemoryFile text(scale ? secondText : firstText);
        return open64(text.Path().c_str(), O_RDWR | O_CLOEXEC);
    }
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, 0600));
}

namespace {

// What a stream makes of the first page, which is what the readers are held to.
template <typename Value>
Value Extracted(const std::string& text) {
    Value value{};
    std::istringstream(text.substr(0, 4096)) >> value;
    return value;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::cerr.setstate(std::ios::badbit); // all is used already
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::size_t cut = text.find('|');
    firstText = text.substr(0, cut);
    secondText = cut == std::string::npos ? "" : text.substr(cut + 1);

    const auto word = Extracted<std::string>(firstText);
    Hold(ReadAttributeWord("/sys/text") == word);
    Hold(ChannelCount() == static_cast<std::uint8_t>(word.empty() ? 0 : word[0]));
    const GpioPin pin(1, 18);
    Hold(pin.Read() == (word == "1" ? kLevelHigh : kLevelLow));
    Hold(PwmChannel(0).IsEnabled() == (word == "1"));

    ADC adc;
    float voltage = 0.0F;
    Hold(adc.Open(6) && adc.ReadVoltage(voltage));
    const float expected = static_cast<float>(Extracted<std::int32_t>(word)) *
                           Extracted<float>(Extracted<std::string>(secondText)) / 1024.0F;
    Hold(voltage == expected || std::isnan(expected) || std::abs(expected) < 1e-37F);
    return 0;
}
