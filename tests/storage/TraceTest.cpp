#include "base/Trace.h"

#include "storage/DataLog.h"
#include "tests/storage/CardEvents.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

namespace tavrelin {
namespace {

using sim::Scenario;
using sim::SimulatedBoard;
using sim::Texts;

struct TracePoint {
    std::string module;
    std::string operation;
    int line = 0;
};

std::vector<TracePoint>& Traced() {
    static std::vector<TracePoint> points;
    return points;
}

/// The operations that were traced, each once in the order of their first points; a module of
/// another name shows too.
Texts Operations() {
    Texts operations;
    for (const TracePoint& point : Traced()) {
        const std::string name =
            (point.module == "DataLog" ? "" : point.module + ": ") + point.operation;
        if (std::find(operations.begin(), operations.end(), name) == operations.end()) {
            operations.push_back(name);
        }
    }
    return operations;
}

std::vector<int> Lines() {
    std::vector<int> lines;
    for (const TracePoint& point : Traced()) {
        EXPECT_GT(point.line, 0);
        lines.push_back(point.line);
    }
    return lines;
}

const std::string kLog = "/mnt/sd-card/2026-03-07_logfile.csv";

void Open() {
    Traced().clear();
    DataLog(kLog).open();
}

void Mount() {
    Traced().clear();
    DataLog::mount_sd_card();
}

Scenario WithoutCard() {
    Scenario scenario;
    scenario.board.card.present = false;
    return scenario;
}

Scenario WithoutMountPoint() {
    Scenario scenario;
    scenario.board.card.mountPointExists = false;
    return scenario;
}

} // namespace

// Takes the place of the shipped program's empty one.
void Trace(const char* module, const char* operation, int line) {
    Traced().push_back({module, operation, line});
}

namespace {

TEST(Trace, NamesTheOpeningOfALog) {
    SimulatedBoard board(WithMountedCard());
    Open();
    EXPECT_EQ(Operations(), (Texts{"open"})); // of a new day
    Open();
    EXPECT_EQ(Operations(), (Texts{"open"})); // of a day with records
    PullCard(board);
    ASSERT_EQ(board.Card().Unmount("/mnt/sd-card", false), 0);
    Open();
    EXPECT_EQ(Operations(), (Texts{"open"})); // without a card
}

TEST(Trace, NamesTheMountingOfTheCard) {
    for (const Scenario& scenario :
         {Scenario{}, WithMountedCard(), WithoutCard(), WithoutMountPoint()}) {
        const SimulatedBoard board(scenario);
        Mount();
        EXPECT_EQ(Operations(), (Texts{"mount_sd_card"}));
    }
}

TEST(Trace, NamesTheMountingWithinTheOpening) {
    const SimulatedBoard board;
    Open();
    EXPECT_EQ(Operations(), (Texts{"open", "mount_sd_card"}));
}

TEST(Trace, TellsEachWayThroughTheMountingByItsLines) {
    std::set<std::vector<int>> ways;
    for (const Scenario& scenario :
         {Scenario{}, WithMountedCard(), WithoutCard(), WithoutMountPoint()}) {
        const SimulatedBoard board(scenario);
        Mount();
        ways.insert(Lines());
    }
    EXPECT_EQ(ways.size(), 4U);
}

TEST(Trace, TellsEachWayThroughTheOpeningByItsLines) {
    std::set<std::vector<int>> ways;
    const auto note = [&] {
        Open();
        ways.insert(Lines());
    };
    {
        SimulatedBoard board; // mounts, is of a new day; then of a day with records
        note();
        note();
        ASSERT_EQ(board.Card().Unmount("/mnt/sd-card", false), 0);
        board.Card().fat = false; // cannot be mounted
        note();
    }
    {
        SimulatedBoard board(WithMountedCard()); // of a new day
        note();
    }
    {
        SimulatedBoard board(WithMountedCard()); // pulled; then gone
        PullCard(board);
        note();
        note();
    }
    EXPECT_EQ(ways.size(), 6U);
}

TEST(Trace, SaysNothingOfOtherOperations) {
    SimulatedBoard board(WithMountedCard());
    DataLog log(kLog);
    EXPECT_TRUE(log.open());
    Traced().clear();
    EXPECT_TRUE(log.write("record\n"));
    log.close();
    EXPECT_TRUE(DataLog::is_sd_card_present());
    EXPECT_TRUE(DataLog::is_sd_card_mounted());
    EXPECT_TRUE(DataLog::umount_sd_card("/mnt/sd-card"));
    PullCard(board);
    EXPECT_FALSE(log.write("record\n"));
    EXPECT_EQ(Operations(), Texts{});
}

} // namespace
} // namespace tavrelin
