#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace tavrelin {

/// Knows what of standard output has really left the program since this was made; what waits for a
/// flush has not. One at a time.
class FlushedConsole {
  public:
    FlushedConsole() {
        std::cout.flush();
        file_ = mkstemp(path_.data());
        before_ = dup(STDOUT_FILENO);
        dup2(file_, STDOUT_FILENO);
        std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
    }
    FlushedConsole(const FlushedConsole&) = delete;
    FlushedConsole& operator=(const FlushedConsole&) = delete;
    ~FlushedConsole() {
        std::cout.flush();
        dup2(before_, STDOUT_FILENO);
        close(before_);
        close(file_);
        unlink(path_.c_str());
    }

    [[nodiscard]] std::string Text() const {
        std::ifstream file(path_);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::string path_ = "/tmp/tavrelin-stdout-XXXXXX";
    int file_ = -1;
    int before_ = -1;
};

} // namespace tavrelin
