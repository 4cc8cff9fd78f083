#pragma once

#include <cstdint>
#include <string>

namespace tavrelin {

/// A line or channel of sysfs as it stands, whoever exported it: for whoever comes after an owner
/// that ended without giving it back. Says nothing, does nothing at its construction and end, and
/// answers what the kernel made of a call, not what was asked.
class SysfsResource {
  public:
    /// Line `bit` (0 to 31) of port `bank` (0 = A to 3 = D).
    static SysfsResource Line(std::uint32_t bank, std::uint32_t bit);
    /// Channel 0 to 9 of the PWM controller.
    static SysfsResource Channel(std::uint8_t channel);

    /// Folder where it is exported, with a slash at its end.
    [[nodiscard]] const std::string& Parent() const { return parent_; }
    /// False where the kernel knows no lines, or no channels, at all.
    [[nodiscard]] bool CanBeExported() const;
    [[nodiscard]] bool IsExported() const;
    /// Exports it as it is. False when it is not there afterwards; nothing stays exported then.
    [[nodiscard]] bool Export() const;
    /// False when it is still there afterwards.
    [[nodiscard]] bool Unexport() const;

    /// First word of an attribute ("enable"); empty when it cannot be read.
    [[nodiscard]] std::string Read(const char* attribute) const;
    void Write(const char* attribute, const char* text) const;

  private:
    SysfsResource(std::string parent, std::string directory, std::string number);

    std::string parent_;
    std::string directory_;
    std::string number_;
};

} // namespace tavrelin
