#pragma once

#include "devices/Speaker.h"
#include "tests/support/BoardTest.h"
#include "tests/support/Offspring.h"
#include "tests/support/StandInTools.h"

#include <unistd.h>

namespace tavrelin {

/// Sends a standard stream into a pipe while it lives.
class StreamInto {
  public:
    StreamInto(int stream, const Fifo& fifo) : stream_(stream), before_(::dup(stream)) {
        ::dup2(fifo.Descriptor(), stream_);
    }
    StreamInto(const StreamInto&) = delete;
    StreamInto& operator=(const StreamInto&) = delete;
    StreamInto(StreamInto&&) = delete;
    StreamInto& operator=(StreamInto&&) = delete;
    ~StreamInto() {
        ::dup2(before_, stream_);
        ::close(before_);
    }

  private:
    int stream_;
    int before_;
};

/// A board on which no process outlives a test.
class OffspringTest : public BoardTest {
  protected:
    void TearDown() override {
        Offspring::End();
        EXPECT_TRUE(Offspring::Children().empty());
    }

    Offspring offspring;
};

/// Its sound tools are stand-ins.
class SpeakerTest : public OffspringTest {
  protected:
    static constexpr const char* kAlarm = "[aplay][-q][alarm.wav]";
    static constexpr pid_t kNobody = -1;

    /// A speaker that plays.
    void Begin(Speaker& speaker) const {
        EXPECT_TRUE(speaker.Play("alarm.wav", 0));
        EXPECT_EQ(tools.NextCall(), kAlarm);
    }

    StandInTools tools;
};

} // namespace tavrelin
