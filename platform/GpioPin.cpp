#include "platform/GpioPin.h"

#include "platform/AttributeFile.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <iostream>

namespace tavrelin {

namespace {

const char* EdgeText(std::uint32_t edge) {
    switch (edge) {
    case kEdgeRising:
        return "rising";
    case kEdgeFalling:
        return "falling";
    case kEdgeBoth:
        return "both";
    default:
        return "none";
    }
}

// The digit and newline of a value attribute; reading them also acknowledges a pending edge.
struct ValueText {
    std::array<char, 2> text{};
    ssize_t length = 0;
};

ValueText RereadValue(int descriptor) {
    ValueText value;
    ::lseek(descriptor, 0, SEEK_SET);
    value.length = ::read(descriptor, value.text.data(), value.text.size());
    return value;
}

std::uint32_t LevelAfterEdge(int descriptor, short events) {
    // POLLERR comes with every edge and says nothing by itself.
    if ((events & POLLPRI) == 0) {
        return kLevelError;
    }
    const ValueText value = RereadValue(descriptor);
    if (value.length < 1) {
        return kLevelError;
    }
    return value.text[0] == '0' ? kLevelLow : kLevelHigh;
}

} // namespace

GpioPin::GpioPin(std::uint32_t bank, std::uint32_t bit) {
    if (bit >= kLinesPerBank) {
        std::cout << "wrong gpio pin";
        return;
    }
    bit_ = bit;
    bank_ = bank;
    directory_ = LineDirectory(bank, bit);
    ok_ = Export() && SetDirection(kPinInput) && SetEdge(kEdgeNone);
}

GpioPin::GpioPin(std::uint32_t bank, std::uint32_t bit, std::uint32_t mode, std::uint32_t edge) {
    if (bit >= kLinesPerBank) {
        std::cerr << "wrong gpio pin";
        return;
    }
    bit_ = bit;
    bank_ = bank;
    directory_ = LineDirectory(bank, bit);
    ok_ = Export() && SetDirection(mode) && SetEdge(mode >= kPinInputWithEdge ? edge : kEdgeNone);
}

GpioPin::~GpioPin() {
    ok_ = Unexport();
}

bool GpioPin::IsTaken(std::uint32_t bank, std::uint32_t bit) {
    return AttributeDirectoryExists(LineDirectory(bank, bit));
}

bool GpioPin::Export() {
    if (IsExported()) {
        std::cerr << "already used\n";
        return false;
    }
    // A line that the kernel refuses shows at the next step, which finds no folder.
    if (!WriteAttribute(std::string(kGpioClass) + "export", LineNumber())) {
        std::cerr << "unable to lock a gpio";
        return false;
    }
    return true;
}

bool GpioPin::Unexport() {
    if (!IsExported()) {
        std::cerr << "not used yet\n";
        return false;
    }
    if (!WriteAttribute(std::string(kGpioClass) + "unexport", LineNumber())) {
        std::cerr << "unable to release a gpio";
        return false;
    }
    return true;
}

bool GpioPin::SetDirection(std::uint32_t mode) {
    const char* text = mode == kPinOutput ? "out" : "in";
    if (!WriteToLine("/direction", text, "unable to set the gpio mode")) {
        return false;
    }
    mode_ = mode;
    return true;
}

bool GpioPin::SetEdge(std::uint32_t edge) {
    if (!WriteToLine("/edge", EdgeText(edge), "unable to set the gpio trigger")) {
        return false;
    }
    edge_ = edge;
    return true;
}

bool GpioPin::Write(std::uint32_t level) {
    if (mode_ != kPinOutput) {
        return false;
    }
    return WriteToLine("/value", level == kLevelHigh ? "1" : "0", "unable to set the gpio value");
}

std::uint32_t GpioPin::Read() const {
    if (!ConfirmExported()) {
        return kLevelError;
    }
    // Whatever is not the word 1 is low, an attribute that cannot be opened too.
    return ReadAttributeWord(directory_ + "/value") == "1" ? kLevelHigh : kLevelLow;
}

std::uint32_t GpioPin::WaitForEdge(std::int32_t timeoutMs) const {
    if (mode_ < kPinInputWithEdge) {
        return Read();
    }
    if (!ConfirmExported()) {
        return kLevelError;
    }
    FileDescriptor value(::open((directory_ + "/value").c_str(), O_RDONLY | O_CLOEXEC));
    if (!value.IsOpen()) {
        return kLevelError;
    }
    // An edge that came before is not the one waited for: reading acknowledges it.
    RereadValue(value.Get());
    pollfd waiting = {.fd = value.Get(), .events = POLLPRI, .revents = 0};
    if (::poll(&waiting, 1, timeoutMs) <= 0) {
        return kLevelTimeOut;
    }
    return LevelAfterEdge(value.Release(), waiting.revents);
}

std::string GpioPin::LineNumber() const {
    return std::to_string(bank_ * kLinesPerBank + bit_);
}

bool GpioPin::IsExported() const {
    return AttributeDirectoryExists(directory_);
}

bool GpioPin::ConfirmExported() const {
    const bool exported = IsExported();
    if (!exported) {
        std::cerr << "not locked yet\n";
    }
    return exported;
}

bool GpioPin::WriteToLine(const char* attribute, const char* text, const char* complaint) const {
    if (!ConfirmExported()) {
        return false;
    }
    if (!WriteAttribute(directory_ + attribute, text)) {
        std::cerr << complaint;
        return false;
    }
    return true;
}

} // namespace tavrelin
