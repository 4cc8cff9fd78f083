// Events and faults that come with a step, a measurement or a call, and what is told of those that
// never came.

#include "tests/simulator/Launcher.h"

#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>

namespace tavrelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class Occasions : public testing::Test {
  protected:
    std::string File(const std::string& name) const { return folder.Path(name); }
    /// Runs the instrument for two measurements, or up to another limit, under a scenario.
    CommandResult Run(const std::string& scenario, const std::string& limit = "--measurements",
                      const std::string& count = "2") const {
        WriteText(File("scenario"), scenario);
        CommandResult run = Simulate({"--scenario", File("scenario"), "--events", File("events"),
                                      "--summary", File("summary"), limit, count},
                                     {Binary("tavrelin")});
        EXPECT_EQ(run.status, 0);
        return run;
    }
    /// What the world did, of one kind, and the line before.
    Words Before(const std::string& what) const {
        const Words events = LinesOf(TextOf(File("events")));
        for (std::size_t i = 1; i < events.size(); ++i) {
            if (events[i].find(what) != std::string::npos) {
                return {events[i - 1], events[i]};
            }
        }
        return {};
    }

    TestFolder folder;
};

/// The moment of an event.
std::string MomentOf(const std::string& event) {
    return event.substr(0, event.find(' '));
}

TEST_F(Occasions, ComeWithAStep) {
    Run("[[detector.event]]\nat_step = 3\nnoise = 7\n");
    const std::string moment = MomentOf(Before("detector - noise 7").at(1));
    Run("", "--steps", "2");
    EXPECT_THAT(TextOf(File("summary")), HasSubstr("board_time_us = " + moment + "\n"));
}

TEST_F(Occasions, ComeWithAMeasurement) {
    Run("[[lines.event]]\nat_measurement = 1\nline = 'A0'\nlevel = 1");
    const std::string moment = MomentOf(Before("input - A0 1").at(1));
    Run("", "--measurements", "1");
    EXPECT_THAT(TextOf(File("summary")), HasSubstr("board_time_us = " + moment + "\n"));
}

TEST_F(Occasions, ComeBeforeACallIsAnswered) {
    Run("[[card.event]]\non = { call = 'mount', path = '/mnt/sd-card', occurrence = 2 }\n"
        "do = 'remove'\n[[pump.event]]\non = { call = 'pthread_create' }\nflag_seen = false",
        "--board-time", "60");
    EXPECT_EQ(Before("flag - blocked").size(), 2U);
    Run("[[clock.jump]]\non = { call = 'write', path = '/sys/class/pwm/*', occurrence = 3 }\n"
        "seconds = 60");
    EXPECT_THAT(Before("clock - set by 60 s"),
                ElementsAre(HasSubstr(" write /sys/class/pwm/pwmchip0/pwm0/duty_cycle "),
                            StartsWith("0 0 clock ")));
}

TEST_F(Occasions, FaultsCountCallsFromThemOn) {
    Run("[[fault]]\nat_step = 2\ncall = 'mount'\nerrno = 'EIO'\n[[fault]]\n"
        "at_measurement = 1\ncall = 'pthread_create'\nerrno = 'EAGAIN'\noccurrence = 3");
    const std::string summary = TextOf(File("summary"));
    EXPECT_THAT(summary, HasSubstr("steps = 18\nmeasurements = 1\n")) << "of the next one";
    EXPECT_THAT(summary, HasSubstr("[[fault]]\ncall = \"mount\"\nmet = 0\nstruck = 0\n"));
    EXPECT_THAT(summary, testing::EndsWith("call = \"pthread_create\"\nmet = 3\nstruck = 1\n"));
}

TEST_F(Occasions, ThatNeverCameAreTold) {
    const CommandResult run =
        Run("[[fault]]\ncall = 'open'\npath = '/sys/class/gpio/export'\noccurrence = 900\n"
            "errno = 'EIO'\n[[fault]]\ncall = 'access'\npath = '/dev/mem'\nerrno = 'EIO'\n"
            "[[fault]]\ncall = 'pthread_mutex_lock'\nerrno = 'EIO'\n"
            "[[card.event]]\nat_step = 100\ndo = 'remove'\n"
            "[[card.event]]\non = { call = 'write', path = '/dev/mem' }\ndo = 'remove'\n");
    const std::string told =
        "fault 1 (open of /sys/class/gpio/export: 8 of 900), fault 2 (access "
        "of /dev/mem: 0 of 1), step 100 of an event, write of /dev/mem number 1 "
        "of an event";
    EXPECT_EQ(run.error, "simulate: never came: " + told + "\n");
    EXPECT_THAT(TextOf(File("summary")), HasSubstr("never_came = '''" + told + "'''\n"));
    EXPECT_THAT(TextOf(File("summary")),
                HasSubstr("[[fault]]\ncall = \"access\"\npath = \"/dev/mem\"\nmet = 0\n"
                          "struck = 0\n"));
}

} // namespace
} // namespace tavrelin
