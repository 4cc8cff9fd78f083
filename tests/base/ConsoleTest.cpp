#include "base/Console.h"

#include "tests/support/FlushedConsole.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

TEST(Console, KeepsALineUntilAFlushedOneTakesItAlong) {
    const FlushedConsole console;
    PrintLine("first");
    EXPECT_EQ(console.Text(), "");
    PrintLineAndFlush("second");
    EXPECT_EQ(console.Text(), "first\nsecond\n");
}

} // namespace
} // namespace tavrelin
