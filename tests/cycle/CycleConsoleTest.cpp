#include "cycle/CycleConsole.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace tavrelin {
namespace {

/// Sends standard output to a file, through a buffer that nothing but a flush empties.
class BufferedStdout {
  public:
    BufferedStdout() {
        std::fflush(stdout);
        file_ = mkstemp(path_.data());
        before_ = dup(STDOUT_FILENO);
        dup2(file_, STDOUT_FILENO);
        std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
    }
    BufferedStdout(const BufferedStdout&) = delete;
    BufferedStdout& operator=(const BufferedStdout&) = delete;
    ~BufferedStdout() {
        std::fflush(stdout);
        dup2(before_, STDOUT_FILENO);
        close(before_);
        close(file_);
        unlink(path_.c_str());
    }

    [[nodiscard]] std::string Arrived() const {
        std::ifstream file(path_);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::string path_ = "/tmp/tavrelin-stdout-XXXXXX";
    int file_ = -1;
    int before_ = -1;
};

TEST(CycleConsole, NamesTheModuleAndTheLineAndFlushes) {
    const BufferedStdout output;
    PrintCycleLine(451, "Elements: 3");
    EXPECT_EQ(output.Arrived(), "MeasurementCycle.cpp, 451, Elements: 3\n");
}

TEST(CycleConsole, PrintsSuccessAsADigitAndFlushes) {
    const BufferedStdout output;
    PrintCycleSuccess(1091, true);
    PrintCycleSuccess(1096, false);
    EXPECT_EQ(output.Arrived(), "MeasurementCycle.cpp, 1091, success: 1\n"
                                "MeasurementCycle.cpp, 1096, success: 0\n");
}

} // namespace
} // namespace tavrelin
