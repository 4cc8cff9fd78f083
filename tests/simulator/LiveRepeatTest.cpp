// What is done by hand on the live bench is kept: the saved scenario, and the command at its head,
// give the same run, console, events and log byte for byte.

#include "tests/simulator/LiveBench.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <random>
#include <regex>

namespace tavrelin {
namespace {

using testing::HasSubstr;
using Json = LiveBench::Json;

/// How a run is made, and how it is meddled with.
struct Way {
    const char* name;
    unsigned seed;
    Words options;
    const char* scenario;
    int deeds;
    int longestWait; ///< between two of them, in ms of real time
    bool roughly;    ///< with what may end the program: faults and a covered flag
};

class LiveRepeat : public testing::TestWithParam<Way> {
  protected:
    LiveRepeat() : random(GetParam().seed) {}

    double Uniform(double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    }
    std::size_t Below(std::size_t bound) { return random() % bound; }

    Json Fault() {
        static const std::vector<Json> faults{
            {{"call", "open"}, {"path", "/mnt/sd-card/*"}, {"errno", "EACCES"}},
            {{"call", "write"}, {"path", "/mnt/sd-card/*"}, {"bytes", 0}},
            {{"call", "statfs"}, {"errno", "EIO"}},
            {{"call", "write"}, {"path", "/sys/class/pwm/pwmchip0/*"}, {"errno", "EINVAL"}},
            {{"call", "read"}, {"path", "/sys/class/gpio/*"}, {"errno", "EIO"}},
            {{"call", "nanosleep"}, {"errno", "EINTR"}, {"occurrence", 2}},
            {{"call", "pthread_create"}, {"errno", "EAGAIN"}, {"occurrence", 3}}};
        Json fault = faults[Below(faults.size())];
        fault["do"] = "fault";
        return fault;
    }

    Json Deed() {
        const auto one = [this](const Words& values) { return values[Below(values.size())]; };
        switch (Below(GetParam().roughly ? 10 : 8)) {
        case 0:
        case 1:
            return {{"do", "absorbance"}, {"value", Uniform(-0.1, 2.0)}};
        case 2:
            return {{"do", "noise"}, {"value", Uniform(0.0, 60.0)}};
        case 3:
        case 4:
            return {{"do", "card"}, {"value", one({"remove", "insert", "lock", "unlock"})}};
        case 5:
            return {{"do", one({"pause", "step", "measurement"})}};
        case 6:
        case 7:
            return {{"do", "run"}};
        case 8:
            return {{"do", "flag"}, {"value", one({"blocked", "free", "free"})}};
        default:
            return Fault();
        }
    }

    /// Meddles until the program is gone or all is done, and lets it run on.
    void MeddleWith(const LiveBench& bench) {
        for (int i = 0; i < GetParam().deeds; ++i) {
            const Json deed = Deed();
            const auto [status, body] = bench.Post(deed.dump());
            if (body.find("has ended") != std::string::npos) {
                return;
            }
            ASSERT_EQ(status, 200) << deed << body;
            LiveBench::Wait(
                static_cast<int>(Below(static_cast<std::size_t>(GetParam().longestWait))));
        }
        bench.Post(R"({"do":"run"})");
        bench.Post(R"({"do":"pace","value":0})");
    }

    TestFolder folder;
    std::mt19937 random;
};

TEST_P(LiveRepeat, GivesTheSameRunByteForByte) {
    const std::string kept = folder.Path("bench.toml");
    WriteText(folder.Path("before.toml"), GetParam().scenario);
    Words options{"--scenario", folder.Path("before.toml")};
    options.insert(options.end(), GetParam().options.begin(), GetParam().options.end());
    LiveBench bench(folder.Path(), "first", options);
    MeddleWith(bench);
    ASSERT_NE(bench.AwaitEnd().at("ended"), "");
    const std::string scenario = bench.Get("/scenario").second;
    WriteText(kept, scenario);
    bench.Interrupt();

    std::smatch head;
    ASSERT_TRUE(std::regex_search(scenario, head, std::regex("\n#   simulate (.*)\n"))) << scenario;
    const CommandResult again = RunCommand({"sh", "-c",
                                            "cd " + folder.Path() + " && " + Binary("simulate") +
                                                " --events second.events --root second " +
                                                head[1].str() + " > second.console"});
    EXPECT_EQ(TextOf(folder.Path("second.console")), TextOf(folder.Path("first.console")));
    EXPECT_TRUE(TextOf(folder.Path("second.events")) == TextOf(folder.Path("first.events")))
        << scenario << again.error;
    EXPECT_EQ(FilesIn(folder.Path("second/card")), FilesIn(folder.Path("first/card")));
    EXPECT_THAT(TextOf(folder.Path("first.events")), HasSubstr(" 0 "));
}

const std::vector<Way> kWays{
    {"AtMaxPace", 1, {"--board-time", "3000", "--pace", "max"}, "", 120, 8, false},
    {"AtMaxPaceWithOtherSeed",
     2,
     {"--board-time", "3000", "--pace", "max", "--seed", "7"},
     "detector.noise = 40",
     150,
     5,
     false},
    {"WithThreadsInAnyOrder",
     3,
     {"--board-time", "2500", "--pace", "max", "--seed", "11"},
     "threads.order = 'seeded'\n[[card.event]]\nat = 60\ndo = 'remove'\n[[clock.jump]]\nat = 70\n"
     "seconds = 3600",
     150,
     5,
     false},
    {"WithFreeCalls",
     4,
     {"--board-time", "1500", "--pace", "max", "--io-cost", "none"},
     "threads.order = 'seeded'",
     150,
     5,
     false},
    {"AtTenfoldPace", 5, {"--board-time", "60", "--pace", "10"}, "", 60, 60, false},
    {"InRealTime", 6, {"--board-time", "15", "--start", "2026-03-28 23:59:50"}, "", 40, 90, false},
    {"RoughlyAtMaxPace", 7, {"--board-time", "3000", "--pace", "max"}, "", 100, 5, true},
    {"RoughlyWithThreadsInAnyOrder",
     8,
     {"--board-time", "1500", "--pace", "20", "--seed", "5"},
     "threads.order = 'seeded'\n[[fault]]\ncall = 'open'\nerrno = 'EIO'\noccurrence = 4000",
     100,
     20,
     true},
    {"RoughlyWithFreeCalls",
     9,
     {"--board-time", "1500", "--pace", "max", "--io-cost", "none"},
     "",
     100,
     5,
     true},
};

INSTANTIATE_TEST_SUITE_P(Ways, LiveRepeat, testing::ValuesIn(kWays),
                         [](const auto& way) { return std::string(way.param.name); });

} // namespace
} // namespace tavrelin
