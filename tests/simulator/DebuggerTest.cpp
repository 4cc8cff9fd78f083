// The instrument under gdb: the same run, however long somebody looks at it.

#include "tests/simulator/Launcher.h"

#include "tests/support/TestFolder.h"

#include <gmock/gmock.h>

namespace tavrelin {
namespace {

using testing::HasSubstr;

class Debugger : public testing::Test {
  protected:
    std::string File(const std::string& name) const { return folder.Path(name); }
    /// Runs the instrument for a measurement under gdb with these commands.
    CommandResult Debug(const std::string& commands) const {
        WriteText(File("commands"), commands);
        return RunCommand({"sh", "-c",
                           R"("$0" --measurements 1 --io-cost none --events "$1/debugged" \
                                          --summary "$1/summary" --gdb -- "$2" <"$1/commands" 2>&1)",
                           Binary("simulate"), folder.Path(), Binary("tavrelin")});
    }

    TestFolder folder;
};

TEST_F(Debugger, ChangesNoByteOfARun) {
    const CommandResult run = Debug("tbreak tavrelin::DeliverReagent\nrun\nbacktrace 1\n"
                                    "shell sleep 1\ncontinue\nquit\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, HasSubstr("hit Temporary breakpoint 1, "));
    EXPECT_THAT(run.output, HasSubstr("tavrelin::DeliverReagent"));
    Simulate({"--measurements", "1", "--events", File("events")}, {Binary("tavrelin")});
    EXPECT_EQ(TextOf(File("debugged")), TextOf(File("events")));
    EXPECT_THAT(TextOf(File("summary")),
                testing::StartsWith("end = \"limit reached: measurements\"\nstatus = 0\n"));
}

TEST_F(Debugger, MayLeaveWithoutARun) {
    EXPECT_EQ(Debug("quit\n").status, 0);
    EXPECT_THAT(TextOf(File("summary")), testing::StartsWith("end = \"not run\"\n"));
}

} // namespace
} // namespace tavrelin
