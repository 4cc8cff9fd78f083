#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <string>

namespace tavrelin {

/// Keeps what is shown on the console from its construction on, byte for byte. One at a time.
class CapturedConsole {
  public:
    CapturedConsole() { Begin(); }
    CapturedConsole(const CapturedConsole&) = delete;
    CapturedConsole& operator=(const CapturedConsole&) = delete;
    /// Shows what a failed test has said: the account of its failure is among it.
    ~CapturedConsole() {
        End();
        if (testing::Test::HasFailure()) {
            std::cout << output_ << error_ << std::flush;
        }
    }

    /// Standard output and standard error so far.
    const std::string& Output() {
        Take();
        return output_;
    }
    const std::string& Error() {
        Take();
        return error_;
    }

  private:
    static void Begin() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }

    void End() {
        std::cout.flush();
        output_ += testing::internal::GetCapturedStdout();
        error_ += testing::internal::GetCapturedStderr();
    }

    void Take() {
        End();
        Begin();
    }

    std::string output_;
    std::string error_;
};

/// What standard output gets while `action` runs.
template <typename Action>
std::string ConsoleOf(Action action) {
    CapturedConsole console;
    action();
    return console.Output();
}

} // namespace tavrelin
