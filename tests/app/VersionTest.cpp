#include "app/Version.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

TEST(Version, IsFourNumbersAndANewline) {
    EXPECT_EQ(Version::VersionString(), "0.1.4.47\n");
    EXPECT_EQ(Version::VersionString().size(), 9U);
}

} // namespace
} // namespace tavrelin
