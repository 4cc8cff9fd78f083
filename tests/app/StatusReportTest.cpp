#include "app/StatusReport.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"
#include "tests/support/CapturedConsole.h"
#include "tests/support/FlushedConsole.h"

#include <gmock/gmock.h>

#include <limits>

namespace tavrelin {
namespace {

using testing::HasSubstr;

std::string StatusLine(float value) {
    return ConsoleOf([&] { ReportStatus(value, "Priming"); });
}

class StatusReport : public ::testing::Test {
  protected:
    const TimeZone utc_;
    sim::SimulatedBoard board_{{}, StartingAt("2024-03-07 09:05:02")};
};

TEST_F(StatusReport, BreaksAfterTheVersionAndIsOutAtOnce) {
    const FlushedConsole console;
    ReportStatus(-0.0F, "Priming");
    EXPECT_EQ(console.Text(), "TAVRELIN,2024-03-07 09:05.02,-0.000,0,0.1.4.47\n,Priming\n");
}

TEST_F(StatusReport, ShowsItsValueWithThreeDecimalsInFourCharactersAtLeast) {
    EXPECT_THAT(StatusLine(1e9F), HasSubstr(".02,1000000000.000,0,"));
    EXPECT_THAT(StatusLine(-1714.8182F), HasSubstr(".02,-1714.818,0,"));
    EXPECT_THAT(StatusLine(-std::numeric_limits<float>::quiet_NaN()), HasSubstr(".02, nan,0,"));
}

TEST_F(StatusReport, ShowsWhetherTheCardIsMountedAnewInEveryLine) {
    EXPECT_THAT(StatusLine(0.0F), HasSubstr(",0.000,0,"));
    board_.Card().mounted = true;
    EXPECT_THAT(StatusLine(0.0F), HasSubstr(",0.000,1,"));
    board_.RemoveCard();
    board_.Elapse(sim::Seconds(1));
    EXPECT_THAT(StatusLine(0.0F), HasSubstr(",0.000,1,")) << "pulled, but still listed as mounted";
    board_.Card().Unmount(false);
    EXPECT_THAT(StatusLine(0.0F), HasSubstr(",0.000,0,"));
}

TEST_F(StatusReport, ShowsNoCardWithoutAMountTable) {
    board_.Card().mounted = true;
    board_.TakeAway("/etc/mtab");
    EXPECT_THAT(StatusLine(0.0F), HasSubstr(",0.000,0,"));
}

} // namespace
} // namespace tavrelin
