// Each of the kernel's calls has its row: one that is forgotten would end a run that it need not
// end.

#include "simulator/interpose/SystemCall.h"

#include <gtest/gtest.h>
#include <set>

namespace tavrelin {
namespace {

/// Of x86-64 in Linux 6.1; the two numbers that no call has, and those that were given up.
TEST(SystemCallTable, HasARowForEachCallOfTheKernel) {
    const std::set<long> gone{156, 174, 177, 178, 181, 182, 183, 184, 185, 214, 215, 236};
    for (const auto& [first, last] : {std::pair{0, 334}, std::pair{424, 450}}) {
        for (long number = first; number <= last; ++number) {
            const sim::SystemCall* call = sim::FindSystemCall(number);
            EXPECT_EQ(call == nullptr, gone.contains(number)) << "system call " << number;
            EXPECT_TRUE(call == nullptr || call->number == number);
        }
    }
    EXPECT_EQ(sim::FindSystemCall(9999), nullptr);
    EXPECT_EQ(sim::FindSystemCall(-1), nullptr);
}

/// What is answered has somebody to answer it.
TEST(SystemCallTable, HasAnAnswerWhereItSaysSo) {
    for (long number = 0; number <= 450; ++number) {
        const sim::SystemCall* call = sim::FindSystemCall(number);
        const bool answered = call != nullptr && (call->treatment == sim::Treatment::StoodIn ||
                                                  call->treatment == sim::Treatment::Answered);
        EXPECT_TRUE(!answered || call->answer != nullptr) << number;
    }
}

} // namespace
} // namespace tavrelin
