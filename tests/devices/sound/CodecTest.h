#pragma once

#include "devices/Codec.h"
#include "tests/devices/sound/SoundCalls.h"
#include "tests/support/BoardTest.h"
#include "tests/support/TestCard.h"

#include <cstddef>
#include <ostream>
#include <string>

namespace tavrelin {

/// A board with a sound card, watched. Whatever happens, nothing of the sound library stays open.
class CodecTest : public BoardTest {
  protected:
    void TearDown() override { EXPECT_EQ(calls.Unreleased(), 0); }

    TestCard card;
    SoundCalls calls;
};

/// The same with a codec.
class CodecAtHand : public CodecTest {
  protected:
    const Codec codec;
};

/// A call of the sound library that fails or answers oddly.
struct OddAnswer {
    const char* call = "";
    long result = 0;
    unsigned occurrence = 1;
};

inline void PrintTo(const OddAnswer& odd, std::ostream* text) {
    *text << odd.call << " answers " << odd.result;
}

/// The name of a test of one such answer among others.
inline std::string NameOf(const OddAnswer& answer, std::size_t index) {
    return std::string(answer.call) + "_" + std::to_string(index);
}

} // namespace tavrelin
