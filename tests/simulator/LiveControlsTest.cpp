// What the live bench shows and what its controls do, each told by the board itself.

#include "tests/simulator/LiveBench.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>

namespace tavrelin {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using Json = LiveBench::Json;

class LiveControls : public testing::Test {
  protected:
    static Words Paced(const char* pace, const char* boardTime) {
        return {"--pace", pace, "--board-time", boardTime};
    }

    /// One on a board that nothing but these tests touches.
    std::unique_ptr<LiveBench> Open(const Words& options) const {
        return std::make_unique<LiveBench>(folder.Path(), "run", options);
    }
    std::string Events() const { return TextOf(folder.Path("run.events")); }
    /// The microseconds of a moment that a command told.
    static std::string At(double seconds) {
        return std::to_string(static_cast<long long>(seconds * 1e6 + 0.5)) + " ";
    }

    TestFolder folder;
};

TEST_F(LiveControls, RunInRealTimeUnlessToldOtherwise) {
    const auto bench = Open({});
    bench->StateWith([](const Json& state) { return state.contains("time"); });
    const double before = bench->State().at("time");
    LiveBench::Wait(1000);
    const Json state = bench->State();
    EXPECT_EQ(state.at("pace"), 1);
    EXPECT_NEAR(state.at("time").get<double>() - before, 1.0, 0.5);
}

TEST_F(LiveControls, PauseStopsBoardTimeAndRunLetsItGoOn) {
    const auto bench = Open(Paced("real", "1000"));
    bench->Do({{"do", "pause"}});
    const Json paused =
        bench->StateWith([](const Json& state) { return state.at("paused") == true; });
    LiveBench::Wait(300);
    EXPECT_EQ(bench->State().at("time"), paused.at("time"));
    bench->Do({{"do", "run"}});
    LiveBench::Wait(500);
    const double passed = bench->State().at("time").get<double>() - paused.at("time").get<double>();
    EXPECT_GT(passed, 0.1);
    EXPECT_LT(passed, 0.7) << "what was paused is not made up for";
}

TEST_F(LiveControls, OneStepAndOneMeasurementEndInAPause) {
    const auto bench = Open(Paced("max", "100000"));
    const auto isPaused = [](const Json& state) { return state.at("paused") == true; };
    bench->Do({{"do", "pause"}});
    const auto steps = bench->StateWith(isPaused).at("steps").get<int>();
    bench->Do({{"do", "step"}});
    const Json stepped = bench->StateWith(
        [&](const Json& state) { return isPaused(state) && state.at("steps").get<int>() > steps; });
    EXPECT_EQ(stepped.at("steps"), steps + 1);
    EXPECT_EQ(stepped.at("step"), steps % 17 + 1);
    const auto shown = stepped.at("measurements").get<int>();
    bench->Do({{"do", "measurement"}});
    const Json measured = bench->StateWith([&](const Json& state) {
        return isPaused(state) && state.at("measurements").get<int>() > shown;
    });
    EXPECT_EQ(measured.at("measurements"), shown + 1);
    EXPECT_NEAR(measured.at("chlorine").get<double>(), 428.705, 0.001);
    EXPECT_EQ(measured.at("results").back().at(1), measured.at("chlorine"));
    EXPECT_THAT(measured.at("log").get<std::string>(), HasSubstr(",428.705,20000,3e+06,"));
}

TEST_F(LiveControls, WhatIsDoneHappensAtTheMomentThatIsTold) {
    const auto bench = Open(Paced("max", "100000"));
    bench->Do({{"do", "pause"}});
    const std::pair<Json, std::string> deeds[]{
        {{{"do", "absorbance"}, {"value", 0.8}}, "0 sample - next 0.8"},
        {{{"do", "card"}, {"value", "lock"}}, "0 card - locked"},
        {{{"do", "card"}, {"value", "unlock"}}, "0 card - unlocked"},
        {{{"do", "card"}, {"value", "remove"}}, "0 card - removed"},
        {{{"do", "card"}, {"value", "insert"}}, "0 card - inserted"},
        {{{"do", "noise"}, {"value", 12.5}}, "0 detector - noise 12.5"},
        {{{"do", "flag"}, {"value", "blocked"}}, "0 flag - blocked"},
        {{{"do", "flag"}, {"value", "free"}}, "0 flag - free"},
    };
    Words lines;
    double last = -1.0;
    for (const auto& [command, line] : deeds) {
        const double at = bench->Do(command);
        EXPECT_GT(at, last) << "each has a moment of its own";
        last = at;
        lines.push_back(At(at) + line + "\n");
    }
    const double fault = bench->Do({{"do", "fault"},
                                    {"call", "write"},
                                    {"path", "/sys/class/pwm/pwmchip0/*"},
                                    {"errno", "EINVAL"}});
    EXPECT_GT(fault, last);
    const Json done = bench->State().at("done");
    ASSERT_EQ(done.size(), 9U);
    EXPECT_EQ(done[0][1], deeds[0].first);
    bench->Do({{"do", "run"}});
    const Json struck = bench->StateWith([](const Json& state) {
        return state.at("ended") != "" ||
               (!state.at("faults").empty() && state.at("faults")[0].at("struck") == 1);
    });
    EXPECT_EQ(struck.at("faults")[0].at("struck"), 1);
    EXPECT_EQ(struck.at("noise"), 12.5);
    bench->Interrupt();
    for (const std::string& line : lines) {
        EXPECT_THAT("\n" + Events(), HasSubstr("\n" + line));
    }
}

TEST_F(LiveControls, TheNextSampleIsTheOneThatWasPutThere) {
    const auto bench = Open(Paced("max", "1000000"));
    bench->Do({{"do", "measurement"}});
    const auto measured = [](int count) {
        return [count](const Json& state) { return state.at("measurements").get<int>() > count; };
    };
    const auto before = bench->StateWith(measured(0)).at("measurements").get<int>();
    EXPECT_GT(bench->Do({{"do", "absorbance"}, {"value", 0.1}}), 0.0);
    bench->Do({{"do", "measurement"}});
    const Json state = bench->StateWith(measured(before));
    EXPECT_EQ(state.at("cell").at("sample"), 0.1);
    EXPECT_NEAR(state.at("chlorine").get<double>(), 171.482, 0.002);
}

TEST_F(LiveControls, ThePictureIsTheBoards) {
    const auto bench = Open({"--pace", "2", "--board-time", "1000"});
    const Json priming = bench->StateWith([](const Json& state) {
        return state.contains("pump") && state.at("pump").at("angle") > 30;
    });
    EXPECT_EQ(priming.at("pump").at("enabled"), true);
    EXPECT_EQ(priming.at("pump").at("forward"), true);
    EXPECT_EQ(priming.at("pump").at("frequency"), 1600);
    EXPECT_EQ(priming.at("pump").at("limit"), 7);
    EXPECT_EQ(priming.at("valve").at("open"), true);
    EXPECT_EQ(priming.at("valve").at("duty"), 100);
    EXPECT_EQ(priming.at("lamp").at("duty"), 30);
    EXPECT_EQ(priming.at("stirrer").at("on"), false);
    EXPECT_EQ(
        priming.at("card"),
        (Json{
            {"present", true}, {"mounted", false}, {"locked", false}, {"file", ""}, {"bytes", 0}}));
    EXPECT_THAT(priming.at("console").get<std::string>(), HasSubstr(",Priming\n"));
    EXPECT_EQ(priming.at("indicator"), "off");
}

TEST_F(LiveControls, TheEndIsShownWithItsReason) {
    const auto bench = Open({"--pace", "max", "--measurements", "2"});
    const Json state = bench->AwaitEnd();
    EXPECT_EQ(state.at("ended"), "limit reached: measurements");
    EXPECT_EQ(state.at("measurements"), 2);
    EXPECT_EQ(state.at("card").at("file"), "2026-03-07_logfile.csv");
    const std::string log = TextOf(folder.Path("run/card/2026-03-07_logfile.csv"));
    EXPECT_EQ(state.at("card").at("bytes"), log.size());
    EXPECT_EQ(state.at("log"), log.substr(log.size() - 4096));
    EXPECT_EQ(bench->Post(R"({"do":"run"})"),
              (std::pair{400, std::string(R"({"error":"the program has ended"})")}));
    EXPECT_EQ(bench->Interrupt(), 0) << "as the run ended";
}

TEST_F(LiveControls, ACrashIsShownToo) {
    const LiveBench bench(folder.Path(), "run", {}, {testProgram("troublemaker"), "segfault"});
    EXPECT_THAT(bench.AwaitEnd().at("ended").get<std::string>(),
                HasSubstr("the program crashed (SIGSEGV)"));
    EXPECT_THAT(bench.Said(), HasSubstr("the program crashed (SIGSEGV)"));
}

TEST_F(LiveControls, TheScenarioOfTheBeginningIsKept) {
    const std::string scenario = "# mine\n[detector]\nnoise = 3";
    WriteText(folder.Path("mine.toml"), scenario);
    const auto bench = Open({"--scenario", folder.Path("mine.toml"), "--seed", "9"});
    bench->Do({{"do", "pause"}});
    const std::string at = std::to_string(bench->Do({{"do", "card"}, {"value", "remove"}}));
    EXPECT_EQ(bench->Get("/scenario").second,
              "# Made on the live bench. Repeats the run byte for byte:\n"
              "#   simulate --scenario bench.toml --seed 9 --start '2026-03-07 09:00:00' "
              "--io-cost board --real-time 0 -- " +
                  Binary("tavrelin") + "\n" + scenario +
                  "\n[[card.event]]\ndo = \"remove\"\nat = " + at + "\n");
}

TEST_F(LiveControls, AScenarioThatTakesNoMoreTablesSaysSo) {
    WriteText(folder.Path("closed.toml"),
              "fault = [{call = 'open', errno = 'EIO', occurrence = 9}]");
    const auto bench = Open({"--scenario", folder.Path("closed.toml")});
    const auto [status, body] = bench->Post(R"({"do":"fault","call":"open","errno":"EIO"})");
    EXPECT_EQ(status, 400);
    EXPECT_THAT(body, HasSubstr("the scenario cannot take it: "));
    EXPECT_GT(bench->Do({{"do", "card"}, {"value", "lock"}}), 0.0);
}

TEST_F(LiveControls, AWrongScenarioEndsTheLauncherAtOnce) {
    WriteText(folder.Path("wrong.toml"), "card = 1");
    const CommandResult run =
        Simulate({"--serve", "--scenario", folder.Path("wrong.toml")}, {Binary("tavrelin")});
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.error, HasSubstr("wrong.toml:1: card: is a table"));
}

} // namespace
} // namespace tavrelin
