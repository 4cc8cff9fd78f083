#include "simulator/kernel/ErrnoNames.h"

#include <array>
#include <cerrno>
#include <utility>

namespace sim {
namespace {

using namespace std::string_view_literals;

constexpr std::array kNames{
    std::pair{"EPERM"sv, EPERM},
    std::pair{"ENOENT"sv, ENOENT},
    std::pair{"EINTR"sv, EINTR},
    std::pair{"EIO"sv, EIO},
    std::pair{"ENXIO"sv, ENXIO},
    std::pair{"EBADF"sv, EBADF},
    std::pair{"EAGAIN"sv, EAGAIN},
    std::pair{"ENOMEM"sv, ENOMEM},
    std::pair{"EACCES"sv, EACCES},
    std::pair{"EBUSY"sv, EBUSY},
    std::pair{"EEXIST"sv, EEXIST},
    std::pair{"ENODEV"sv, ENODEV},
    std::pair{"ENOTDIR"sv, ENOTDIR},
    std::pair{"EISDIR"sv, EISDIR},
    std::pair{"EINVAL"sv, EINVAL},
    std::pair{"ENFILE"sv, ENFILE},
    std::pair{"EMFILE"sv, EMFILE},
    std::pair{"ENOTTY"sv, ENOTTY},
    std::pair{"EFBIG"sv, EFBIG},
    std::pair{"ENOSPC"sv, ENOSPC},
    std::pair{"EROFS"sv, EROFS},
    std::pair{"EPIPE"sv, EPIPE},
    std::pair{"ERANGE"sv, ERANGE},
    std::pair{"EDEADLK"sv, EDEADLK},
    std::pair{"ENAMETOOLONG"sv, ENAMETOOLONG},
    std::pair{"ENOSYS"sv, ENOSYS},
    std::pair{"EMSGSIZE"sv, EMSGSIZE},
    std::pair{"ETIMEDOUT"sv, ETIMEDOUT},
    std::pair{"ESRCH"sv, ESRCH},
    std::pair{"ECHILD"sv, ECHILD},
};

} // namespace

std::string ErrnoName(int error) {
    for (const auto& [name, number] : kNames) {
        if (number == error) {
            return std::string(name);
        }
    }
    return std::to_string(error);
}

std::string Outcome(long result) {
    return result >= 0 ? "ok" : ErrnoName(static_cast<int>(-result));
}

std::optional<int> ErrnoNumber(std::string_view name) {
    for (const auto& [known, number] : kNames) {
        if (known == name) {
            return number;
        }
    }
    return std::nullopt;
}

} // namespace sim
