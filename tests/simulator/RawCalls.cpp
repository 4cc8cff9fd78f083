#include "tests/simulator/RawCalls.h"

#include "simulator/kernel/ErrnoNames.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace tavrelin {
namespace {

long OrError(long result) {
    return result < 0 ? -errno : result;
}

} // namespace

Descriptor::Descriptor(const std::string& path, int flags)
    : number_(::open(path.c_str(), flags, 0666)), error_(number_ < 0 ? errno : 0) {}

Descriptor::~Descriptor() {
    if (number_ >= 0) {
        ::close(number_);
    }
}

long Descriptor::Write(std::string_view text) const {
    return OrError(::write(number_, text.data(), text.size()));
}

long Descriptor::Seek(long offset, int whence) const {
    return OrError(static_cast<long>(::lseek(number_, offset, whence)));
}

long Descriptor::Read(std::string& text, std::size_t most) const {
    text.assign(most, '\0');
    const long count = OrError(::read(number_, text.data(), most));
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return count;
}

std::string Descriptor::ReadAgain() const {
    std::string text;
    Seek(0, SEEK_SET);
    const long count = Read(text);
    return count < 0 ? sim::Outcome(count) : text;
}

long Descriptor::Close() {
    const long result = OrError(::close(number_));
    number_ = -1;
    return result;
}

int Store(const std::string& path, std::string_view text) {
    const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
    if (file.Error() != 0) {
        return file.Error();
    }
    const long written = file.Write(text);
    return written < 0 ? static_cast<int>(-written) : 0;
}

int OpenError(const std::string& path, int flags) {
    return Descriptor(path, flags).Error();
}

std::string Show(const std::string& path) {
    const Descriptor file(path, O_RDONLY);
    return file.Error() != 0 ? sim::ErrnoName(file.Error()) : file.ReadAgain();
}

std::string LineFile(const std::string& line, const std::string& attribute) {
    return "/sys/class/gpio/pio" + line + "/" + attribute;
}

std::string ChannelFile(unsigned channel, const std::string& attribute) {
    return "/sys/class/pwm/pwmchip0/pwm" + std::to_string(channel) + "/" + attribute;
}

} // namespace tavrelin
