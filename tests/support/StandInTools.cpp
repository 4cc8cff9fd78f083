#include "tests/support/StandInTools.h"

#include <gtest/gtest.h>

namespace tavrelin {

namespace {

constexpr const char* kFinished = "finished";

} // namespace

StandInTools::StandInTools() : calls_(tools_.Path("calls")), finish_(tools_.Path("finish")) {
    FailMixer(0);
    Install("aplay", "read -r line <'" + finish_.Path() + "'\necho " + kFinished + " >'" +
                         calls_.Path() + "'\n");
}

void StandInTools::FinishPlaying() const {
    finish_.Say("now\n");
    EXPECT_EQ(calls_.Line(), kFinished);
}

void StandInTools::FailMixer(int status) const {
    Install("amixer", "exit " + std::to_string(status) + "\n");
}

void StandInTools::Install(const std::string& tool, const std::string& script) const {
    tools_.Install(tool, "{ printf '[%s]' " + tool + " \"$@\"; echo; } >'" + calls_.Path() + "'\n" +
                             script);
}

} // namespace tavrelin
