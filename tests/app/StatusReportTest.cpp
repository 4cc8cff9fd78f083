#include "app/StatusReport.h"

#include "simulator/testing/SimulatedBoard.h"
#include "tests/support/BoardClock.h"
#include "tests/support/ConsoleOf.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <limits>
#include <ostream>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;

std::string StatusLine(float value, const std::string& message) {
    return ConsoleOf([&] { ReportStatus(value, message); });
}

class StatusReport : public ::testing::Test {
  protected:
    const TimeZone utc_;
    SimulatedBoard board_{Scenario{}, StartingAt("2024-03-07 09:05:02")};
};

TEST_F(StatusReport, BreaksAfterTheVersion) {
    EXPECT_EQ(StatusLine(-0.0F, "Priming"), "TAVRELIN,2024-03-07 09:05.02,-0.000,0,0.1.4.47\n"
                                            ",Priming\n");
}

struct ValueText {
    float value;
    const char* text;
};

void PrintTo(const ValueText& value, std::ostream* out) {
    *out << '"' << value.text << '"';
}

class StatusValue : public StatusReport, public ::testing::WithParamInterface<ValueText> {};

TEST_P(StatusValue, HasThreeDecimalsAndAtLeastFourCharacters) {
    EXPECT_EQ(StatusLine(GetParam().value, "Sanity Check"),
              std::string("TAVRELIN,2024-03-07 09:05.02,") + GetParam().text +
                  ",0,0.1.4.47\n,Sanity Check\n");
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

INSTANTIATE_TEST_SUITE_P(
    , StatusValue,
    ::testing::Values(ValueText{0.0F, "0.000"}, ValueText{-0.0F, "-0.000"},
                      ValueText{975.389F, "975.389"}, ValueText{1e9F, "1000000000.000"},
                      ValueText{-1714.8182F, "-1714.818"}, ValueText{-0.0001F, "-0.000"},
                      ValueText{kNaN, " nan"}, ValueText{-kNaN, " nan"},
                      ValueText{kInfinity, " inf"}, ValueText{-kInfinity, "-inf"},
                      ValueText{-3.4028235e38F, "-340282346638528859811704183484516925440.000"}));

TEST_F(StatusReport, ShowsWhetherTheCardIsMountedAnewInEveryLine) {
    EXPECT_NE(StatusLine(0.0F, "").find(",0.000,0,"), std::string::npos);
    board_.Card().mounted = true;
    EXPECT_NE(StatusLine(0.0F, "").find(",0.000,1,"), std::string::npos);
    board_.Card().Unmount("/mnt/sd-card", false);
    EXPECT_NE(StatusLine(0.0F, "").find(",0.000,0,"), std::string::npos);
}

TEST_F(StatusReport, ShowsAPulledCardThatIsStillListedAsMounted) {
    board_.Card().mounted = true;
    board_.RemoveCard();
    board_.Elapse(sim::Seconds(1));
    EXPECT_NE(StatusLine(0.0F, "").find(",0.000,1,"), std::string::npos);
}

TEST_F(StatusReport, ShowsNoCardWithoutAMountTable) {
    board_.Card().mounted = true;
    board_.TakeAway("/etc/mtab");
    EXPECT_NE(StatusLine(0.0F, "").find(",0.000,0,"), std::string::npos);
}

// A pipe has no reader that flushes: what arrives was flushed by the report itself.
TEST_F(StatusReport, IsOutAtOnce) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_NONBLOCK), 0);
    std::cout.flush();
    const int console = ::dup(STDOUT_FILENO);
    ::dup2(ends[1], STDOUT_FILENO);
    ReportStatus(0.0F, "Priming");
    std::array<char, 200> text{};
    const ssize_t length = ::read(ends[0], text.data(), text.size());
    ::dup2(console, STDOUT_FILENO);
    for (const int descriptor : {ends[0], ends[1], console}) {
        ::close(descriptor);
    }
    ASSERT_GT(length, 0);
    EXPECT_EQ(std::string(text.data(), static_cast<std::size_t>(length)),
              "TAVRELIN,2024-03-07 09:05.02,0.000,0,0.1.4.47\n,Priming\n");
}

} // namespace
} // namespace tavrelin
