#include "base/Trace.h"

#include "storage/CardAccess.h"
#include "tests/storage/CardEvents.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace tavrelin {
namespace {

// What was traced: the operations, without the next of the same, and all line numbers.
Texts operations;
std::vector<int> lines;

void Forget() {
    operations.clear();
    lines.clear();
}

void Open() {
    Forget();
    DataLog(kLog).open();
}

void Mount() {
    Forget();
    DataLog::mount_sd_card();
}

} // namespace

// Takes the place of the shipped program's empty one.
void Trace(const char* module, const char* operation, int line) {
    const std::string name = std::string(module) + " " + operation;
    if (operations.empty() || operations.back() != name) {
        operations.push_back(name);
    }
    EXPECT_GT(line, 0);
    lines.push_back(line);
}

namespace {

TEST(Trace, NamesTheOpeningOfALog) {
    SimulatedBoard board(WithMountedCard());
    Open();
    EXPECT_EQ(operations, Texts{"DataLog open"}); // of a new day
    Open();
    EXPECT_EQ(operations, Texts{"DataLog open"}); // of a day with records
    PullCard(board);
    UnmountByHand(board);
    Open();
    EXPECT_EQ(operations, Texts{"DataLog open"}); // without a card
}

TEST(Trace, NamesTheMountingOfTheCard) {
    for (const Scenario& scenario :
         {Scenario{}, WithMountedCard(), WithoutCard(), WithoutMountPoint()}) {
        const SimulatedBoard board(scenario);
        Mount();
        EXPECT_EQ(operations, Texts{"DataLog mount_sd_card"});
    }
}

TEST(Trace, NamesTheMountingWithinTheOpening) {
    const SimulatedBoard board;
    Open();
    EXPECT_EQ(operations, (Texts{"DataLog open", "DataLog mount_sd_card"}));
}

TEST(Trace, TellsEachWayThroughTheMountingByItsLines) {
    std::set<std::vector<int>> ways;
    for (const Scenario& scenario :
         {Scenario{}, WithMountedCard(), WithoutCard(), WithoutMountPoint()}) {
        const SimulatedBoard board(scenario);
        Mount();
        ways.insert(lines);
    }
    EXPECT_EQ(ways.size(), 4U);
}

TEST(Trace, TellsEachWayThroughTheOpeningByItsLines) {
    std::set<std::vector<int>> ways;
    const auto note = [&] {
        Open();
        ways.insert(lines);
    };
    {
        SimulatedBoard board; // mounts, is of a new day; then of a day with records
        note();
        note();
        UnmountByHand(board);
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
    Forget();
    EXPECT_TRUE(log.write("record\n"));
    log.close();
    EXPECT_TRUE(DataLog::is_sd_card_present());
    EXPECT_TRUE(DataLog::is_sd_card_mounted());
    EXPECT_TRUE(DataLog::umount_sd_card("/mnt/sd-card"));
    EXPECT_TRUE(MountCard()); // the application's
    PullCard(board);
    EXPECT_TRUE(log.write("record\n"));
    EXPECT_FALSE(MountCard());
    EXPECT_EQ(operations, Texts{});
}

} // namespace
} // namespace tavrelin
