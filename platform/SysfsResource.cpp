#include "platform/SysfsResource.h"

#include "platform/AttributeFile.h"
#include "platform/GpioPin.h"
#include "platform/SysfsNames.h"

#include <utility>

namespace tavrelin {

SysfsResource SysfsResource::Line(std::uint32_t bank, std::uint32_t bit) {
    return {kGpioClass, LineDirectory(bank, bit), std::to_string(bank * kLinesPerBank + bit)};
}

SysfsResource SysfsResource::Channel(std::uint8_t channel) {
    const std::string number = std::to_string(channel);
    return {kPwmController, kPwmController + ("pwm" + number), number};
}

SysfsResource::SysfsResource(std::string parent, std::string directory, std::string number)
    : parent_(std::move(parent)), directory_(std::move(directory)), number_(std::move(number)) {}

bool SysfsResource::CanBeExported() const {
    return AttributeDirectoryExists(parent_);
}

bool SysfsResource::IsExported() const {
    return AttributeDirectoryExists(directory_);
}

bool SysfsResource::Export() const {
    // Named otherwise by its driver, and somebody else's.
    if (AttributeDirectoryExists(parent_ + "gpio" + number_)) {
        return false;
    }
    WriteAttribute(parent_ + "export", number_);
    if (IsExported()) {
        return true;
    }
    // A driver that gives its lines other names has exported it all the same.
    WriteAttribute(parent_ + "unexport", number_);
    return false;
}

bool SysfsResource::Unexport() const {
    WriteAttribute(parent_ + "unexport", number_);
    return !IsExported();
}

std::string SysfsResource::Read(const char* attribute) const {
    return ReadAttributeWord(directory_ + "/" + attribute).value_or("");
}

void SysfsResource::Write(const char* attribute, const char* text) const {
    WriteAttribute(directory_ + "/" + attribute, text);
}

} // namespace tavrelin
