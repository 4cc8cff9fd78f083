#include "tests/simulator/RawCalls.h"

#include "simulator/scenario/ErrnoNames.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace tavrelin {
namespace {

long orError(long result) {
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

long Descriptor::write(std::string_view text) const {
    return orError(::write(number_, text.data(), text.size()));
}

long Descriptor::seek(long offset, int whence) const {
    return orError(::lseek(number_, offset, whence));
}

long Descriptor::read(std::string& text, std::size_t most) const {
    text.assign(most, '\0');
    const long count = orError(::read(number_, text.data(), most));
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return count;
}

std::string Descriptor::readAgain() const {
    std::string text;
    seek(0, SEEK_SET);
    const long count = read(text);
    return count < 0 ? sim::errnoName(static_cast<int>(-count)) : text;
}

long Descriptor::close() {
    const long result = orError(::close(number_));
    number_ = -1;
    return result;
}

int store(const std::string& path, std::string_view text) {
    const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
    if (file.error() != 0) {
        return file.error();
    }
    const long written = file.write(text);
    return written < 0 ? static_cast<int>(-written) : 0;
}

int openError(const std::string& path, int flags) {
    return Descriptor(path, flags).error();
}

std::string show(const std::string& path) {
    const Descriptor file(path, O_RDONLY);
    return file.error() != 0 ? sim::errnoName(file.error()) : file.readAgain();
}

std::string lineFile(const std::string& line, const std::string& attribute) {
    return "/sys/class/gpio/pio" + line + "/" + attribute;
}

std::string channelFile(unsigned channel, const std::string& attribute) {
    return "/sys/class/pwm/pwmchip0/pwm" + std::to_string(channel) + "/" + attribute;
}

} // namespace tavrelin
