#include "tests/devices/sound/SoundCalls.h"

namespace tavrelin {

namespace {

SoundCalls* watching = nullptr;

} // namespace

SoundCalls::SoundCalls() {
    watching = this;
}

SoundCalls::~SoundCalls() {
    watching = nullptr;
}

SoundCalls* SoundCalls::Watching() {
    return watching;
}

void SoundCalls::Answer(const std::string& call, long result, unsigned occurrence) {
    answers_[{call, occurrence}] = result;
}

unsigned SoundCalls::Count(const std::string& call) const {
    const auto found = counts_.find(call);
    return found == counts_.end() ? 0 : found->second;
}

std::optional<long> SoundCalls::Meet(const std::string& call, const std::string& arguments) {
    made_.push_back(call + arguments);
    const auto found = answers_.find({call, ++counts_[call]});
    return found == answers_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<int> SoundCalls::SwitchOf(int channel) const {
    const auto found = switches_.find(channel);
    return found == switches_.end() ? std::nullopt : std::optional(found->second);
}

} // namespace tavrelin
