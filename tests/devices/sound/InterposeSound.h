#pragma once

#include "tests/devices/sound/SoundCalls.h"

#include <optional>
#include <string>

namespace tavrelin {

/// One call into the sound library. It is watched when the code under test makes it, not when the
/// library itself does.
class SoundCall {
  public:
    /// For calls that only count for what they allocate.
    SoundCall() { ++depth; }

    template <typename... Arguments>
    explicit SoundCall(const char* name, const Arguments&... arguments) : SoundCall() {
        if (SoundCalls* calls = Watched()) {
            answer_ = calls->Meet(name, (std::string() + ... + (" " + Text(arguments))));
        }
    }
    SoundCall(const SoundCall&) = delete;
    SoundCall& operator=(const SoundCall&) = delete;
    SoundCall(SoundCall&&) = delete;
    SoundCall& operator=(SoundCall&&) = delete;
    ~SoundCall() { --depth; }

    /// Null when nobody is to know of this call.
    [[nodiscard]] static SoundCalls* Watched() {
        return depth == 1 ? SoundCalls::Watching() : nullptr;
    }

    /// What the test wants as result, if it wants one.
    [[nodiscard]] const std::optional<long>& Answer() const { return answer_; }

    /// The result of a call that uses what is there.
    template <typename Real, typename... Arguments>
    [[nodiscard]] auto Use(Real real, Arguments... arguments) const {
        using Result = decltype(real(arguments...));
        return answer_ ? static_cast<Result>(*answer_) : real(arguments...);
    }
    /// Of one that brings something to be given back.
    template <typename Real, typename... Arguments>
    [[nodiscard]] int Acquire(Real real, Arguments... arguments) const {
        const int result = Use(real, arguments...);
        if (SoundCalls* calls = Watched(); calls != nullptr && result >= 0) {
            calls->Acquired();
        }
        return result;
    }
    /// Of one that gives it back, which it does whatever it answers.
    template <typename Real, typename... Arguments>
    [[nodiscard]] int Release(Real real, Arguments... arguments) const {
        const int result = real(arguments...);
        if (SoundCalls* calls = Watched()) {
            calls->Released();
        }
        return answer_ ? static_cast<int>(*answer_) : result;
    }
    /// One that gives it back and answers nothing.
    template <typename Real, typename... Arguments>
    void Free(Real real, Arguments... arguments) const {
        real(arguments...);
        if (SoundCalls* calls = Watched()) {
            calls->Released();
        }
    }

  private:
    static std::string Text(const char* text) { return text; }
    template <typename Number>
    static std::string Text(Number number) {
        return std::to_string(number);
    }

    static inline thread_local int depth = 0;
    std::optional<long> answer_;
};

} // namespace tavrelin
