#pragma once

#include <string>
#include <string_view>

namespace tavrelin {

/// A descriptor as a program holds it, closed at the end.
class Descriptor {
  public:
    Descriptor(const std::string& path, int flags);
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    int Number() const { return number_; }
    /// The errno of the open, 0 when it succeeded.
    int Error() const { return error_; }

    /// Each gives what the call gave, or the negated errno.
    long Write(std::string_view text) const;
    long Seek(long offset, int whence) const;
    /// One read of up to so many bytes.
    long Read(std::string& text, std::size_t most = 64) const;
    /// The text from the start, or the name of the errno.
    std::string ReadAgain() const;
    long Close();

  private:
    int number_;
    int error_;
};

/// Writes a text as an output stream does, which opens to create and truncate: 0, or the errno of
/// the open or the write.
int Store(const std::string& path, std::string_view text);
/// The errno of opening a path so; 0 when it opens.
int OpenError(const std::string& path, int flags);
/// Text of an attribute, or the name of the errno that refused it.
std::string Show(const std::string& path);

/// Path of a line's attribute: LineFile("B18", "value").
std::string LineFile(const std::string& line, const std::string& attribute);
/// Path of a channel's attribute: ChannelFile(1, "period").
std::string ChannelFile(unsigned channel, const std::string& attribute);

inline constexpr const char* kGpioExport = "/sys/class/gpio/export";
inline constexpr const char* kGpioUnexport = "/sys/class/gpio/unexport";
inline constexpr const char* kPwmExport = "/sys/class/pwm/pwmchip0/export";
inline constexpr const char* kPwmUnexport = "/sys/class/pwm/pwmchip0/unexport";
inline constexpr const char* kSpiDevice = "/dev/spidev32765.1";

} // namespace tavrelin
