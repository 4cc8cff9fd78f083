#pragma once

#include "tests/system/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <string>

namespace tavrelin {

/// Tools of a test's own, found by every shell before the machine's while this lives.
class StandInTools {
  public:
    StandInTools() : path_(std::getenv("PATH")) {
        ::setenv("PATH", (folder_.File("") + ":" + path_).c_str(), 1);
    }
    StandInTools(const StandInTools&) = delete;
    StandInTools& operator=(const StandInTools&) = delete;
    StandInTools(StandInTools&&) = delete;
    StandInTools& operator=(StandInTools&&) = delete;
    ~StandInTools() { ::setenv("PATH", path_.c_str(), 1); }

    /// A tool that does what the lines of shell script say.
    void Add(const std::string& name, const std::string& script) const {
        WriteText(folder_.File(name), "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(folder_.File(name), std::filesystem::perms::owner_all);
    }

    /// A file beside the tools, for what they write down.
    [[nodiscard]] std::string File(const std::string& name) const { return folder_.File(name); }

  private:
    TemporaryFolder folder_;
    std::string path_;
};

} // namespace tavrelin
