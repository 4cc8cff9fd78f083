#include "tests/support/StandInTools.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tavrelin {

namespace {

constexpr const char* kFinished = "finished";

} // namespace

StandInTools::StandInTools()
    : path_("PATH", folder_.Path() + ":" + std::getenv("PATH")), calls_(folder_.Path("calls")),
      finish_(folder_.Path("finish")) {
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
    const std::string file = folder_.Path(tool);
    std::ofstream(file) << "#!/bin/sh\n{ printf '[%s]' " << tool << " \"$@\"; echo; } >'"
                        << calls_.Path() << "'\n"
                        << script;
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
}

} // namespace tavrelin
