#include "simulator/kernel/ErrnoNames.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace sim {
namespace {

using namespace std::string_view_literals;

constexpr std::array kNames{
    "EPERM"sv,  "ENOENT"sv, "EINTR"sv,    "EIO"sv,          "ENXIO"sv,  "EBADF"sv,    "EAGAIN"sv,
    "ENOMEM"sv, "EACCES"sv, "EBUSY"sv,    "EEXIST"sv,       "ENODEV"sv, "ENOTDIR"sv,  "EISDIR"sv,
    "EINVAL"sv, "ENFILE"sv, "EMFILE"sv,   "ENOTTY"sv,       "EFBIG"sv,  "ENOSPC"sv,   "EROFS"sv,
    "EPIPE"sv,  "ERANGE"sv, "EDEADLK"sv,  "ENAMETOOLONG"sv, "ENOSYS"sv, "EMSGSIZE"sv, "ETIMEDOUT"sv,
    "ESRCH"sv,  "ECHILD"sv, "ESHUTDOWN"sv};

std::string_view KnownName(int error) {
    const char* name = strerrorname_np(error);
    const auto* known = std::find(kNames.begin(), kNames.end(), name != nullptr ? name : "");
    return known != kNames.end() ? *known : "";
}

} // namespace

std::string ErrnoName(int error) {
    const std::string_view name = KnownName(error);
    return name.empty() ? std::to_string(error) : std::string(name);
}

std::string Outcome(long result) {
    return result >= 0 ? "ok" : ErrnoName(static_cast<int>(-result));
}

std::optional<int> ErrnoNumber(std::string_view name) {
    constexpr int largest = 133; // EHWPOISON
    for (int error = 1; error <= largest; ++error) {
        if (!name.empty() && KnownName(error) == name) {
            return error;
        }
    }
    return std::nullopt;
}

} // namespace sim
