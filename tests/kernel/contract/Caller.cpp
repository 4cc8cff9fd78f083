#include "tests/kernel/contract/Caller.h"

#include <cstdint>
#include <fcntl.h>
#include <sys/mman.h>

namespace contract {
namespace {

constexpr std::size_t kMostWords = 6;

constexpr std::array kOpenFlags{
    Name{"rd", O_RDONLY},     Name{"wr", O_WRONLY},     Name{"rdwr", O_RDWR},
    Name{"creat", O_CREAT},   Name{"excl", O_EXCL},     Name{"trunc", O_TRUNC},
    Name{"dir", O_DIRECTORY}, Name{"append", O_APPEND}, Name{"nofollow", O_NOFOLLOW},
    Name{"sync", O_SYNC},
};
constexpr std::array kProtections{Name{"read", PROT_READ}, Name{"write", PROT_WRITE},
                                  Name{"shared", 0}, Name{"private", 0}};
constexpr std::array kSharing{Name{"shared", MAP_SHARED}, Name{"private", MAP_PRIVATE}};

} // namespace

std::string Caller::Path(const std::string& word) const {
    if (word == ".") {
        return folder_;
    }
    return word.starts_with('/') ? word : folder_ + "/" + word;
}

int Caller::Descriptor(const std::string& name) const {
    const auto known = descriptors_.find(name);
    return known != descriptors_.end() ? known->second : -1;
}

std::string Caller::Make(Words words) {
    if (words.size() > 3 && words[1] == "=") {
        const std::string name = words[0];
        words.erase(words.begin(), words.begin() + 2);
        words.resize(kMostWords);
        return words[0] == "open" ? Open(name, words) : Map(name, words);
    }
    const std::string call = words[0];
    if (call == "message") {
        return SpiMessage(Descriptor(words.at(1)), {words.begin() + 2, words.end()});
    }
    words.resize(kMostWords);
    if (call == "in") {
        folder_ = words[1];
        return "ok";
    }
    if (call == "munmap") {
        return Unmap(words[1]);
    }
    if (call == "peek" || call == "poke") {
        return Register(call, words);
    }
    if (call == "rename" || call == "same") {
        words[2] = Path(words[2]);
    }
    if (!IsCallOnDescriptor(call)) {
        return CallOnPath(call, Path(words[1]), words);
    }
    std::string answer = CallOnDescriptor(call, Descriptor(words[1]), words);
    if (call == "close") {
        descriptors_.erase(words[1]);
    }
    return answer;
}

std::string Caller::Open(const std::string& name, const Words& words) {
    const int descriptor = open(Path(words[1]).c_str(), Joined(kOpenFlags, words[2]), 0644);
    descriptors_[name] = descriptor;
    return Outcome(descriptor);
}

std::string Caller::Map(const std::string& name, const Words& words) {
    const auto size = static_cast<std::size_t>(Number(words[3]));
    const int sharing = Joined(kSharing, words[2]);
    void* address = mmap(nullptr, size, Joined(kProtections, words[2]), sharing,
                         Descriptor(words[1]), Number(words[4]));
    if (address == MAP_FAILED) {
        return Outcome(-1);
    }
    mappings_[name] = {address, size};
    return "ok";
}

std::string Caller::Unmap(const std::string& name) {
    const Mapping mapping = mappings_[name];
    mappings_.erase(name);
    return Outcome(munmap(mapping.address, mapping.size));
}

std::string Caller::Register(const std::string& call, const Words& words) const {
    const auto found = mappings_.find(words[1]);
    if (found == mappings_.end()) {
        return "not mapped";
    }
    auto* registers = static_cast<volatile std::uint32_t*>(found->second.address);
    volatile std::uint32_t& word = registers[Number(words[2]) / 4];
    const auto value = static_cast<std::uint32_t>(Number(words[3]));
    if (call == "peek") {
        return std::to_string(word & value);
    }
    word = value;
    return "ok";
}

} // namespace contract
