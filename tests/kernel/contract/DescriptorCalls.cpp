#include "tests/kernel/contract/Answers.h"

#include <poll.h>
#include <unistd.h>

namespace contract {
namespace {

constexpr std::array kEvents{
    Name{"in", POLLIN},   Name{"pri", POLLPRI}, Name{"out", POLLOUT},
    Name{"err", POLLERR}, Name{"hup", POLLHUP}, Name{"nval", POLLNVAL},
};
constexpr std::array kWhences{Name{"set", SEEK_SET}, Name{"cur", SEEK_CUR}, Name{"end", SEEK_END}};

std::size_t SizeIn(const Words& words) {
    return static_cast<std::size_t>(Number(words[2]));
}

std::string Receive(int descriptor, const Words& words) {
    std::string buffer(SizeIn(words), '\0');
    return Amount(read(descriptor, buffer.data(), buffer.size()));
}

std::string Send(int descriptor, const Words& words) {
    const std::string buffer(SizeIn(words), '\0');
    return Amount(write(descriptor, buffer.data(), buffer.size()));
}

std::string Status(int descriptor, const Words& /*unused*/) {
    struct stat status {};
    const int result = fstat(descriptor, &status);
    return TypeAndPermissions(result, status);
}

std::string Poll(int descriptor, const Words& words) {
    pollfd waiting{descriptor, static_cast<short>(Joined(kEvents, words[2])), 0};
    const int count = poll(&waiting, 1, static_cast<int>(Number(words[3])));
    if (count <= 0) {
        return count < 0 ? Outcome(count) : "nothing";
    }
    std::string told;
    for (const auto& [name, event] : kEvents) {
        if ((waiting.revents & event) != 0) {
            told += (told.empty() ? "" : "+") + std::string(name);
        }
    }
    return told;
}

struct Call {
    std::string_view name;
    std::string (*make)(int descriptor, const Words& words);
};

constexpr std::array kCalls{
    Call{"receive", Receive},
    Call{"send", Send},
    Call{"fstat", Status},
    Call{"poll", Poll},
    Call{"close", [](int descriptor, const Words&) { return Outcome(close(descriptor)); }},
    Call{"read",
         [](int descriptor, const Words& words) { return ReadOnce(descriptor, SizeIn(words)); }},
    Call{"pread",
         [](int descriptor, const Words& words) {
             return ReadOnce(descriptor, SizeIn(words), Number(words[3]));
         }},
    Call{"write",
         [](int descriptor, const Words& words) {
             return Amount(write(descriptor, words[2].data(), words[2].size()));
         }},
    Call{"pwrite",
         [](int descriptor, const Words& words) {
             return Amount(pwrite(descriptor, words[2].data(), words[2].size(), Number(words[3])));
         }},
    Call{"lseek",
         [](int descriptor, const Words& words) {
             return Amount(lseek(descriptor, Number(words[2]), Joined(kWhences, words[3])));
         }},
    Call{"ftruncate",
         [](int descriptor, const Words& words) {
             return Outcome(ftruncate(descriptor, Number(words[2])));
         }},
    Call{"ioctl", [](int descriptor,
                     const Words& words) { return SpiRequest(descriptor, words[2], words[3]); }},
};

const Call* Find(const std::string& call) {
    const auto* known =
        std::ranges::find_if(kCalls, [&](const Call& one) { return one.name == call; });
    return known != kCalls.end() ? known : nullptr;
}

} // namespace

bool IsCallOnDescriptor(const std::string& call) {
    return Find(call) != nullptr;
}

std::string CallOnDescriptor(const std::string& call, int descriptor, const Words& words) {
    const Call* known = Find(call);
    return known != nullptr ? known->make(descriptor, words) : "not understood";
}

} // namespace contract
