// What ./demo and ./check find missing on a machine.

#include "tests/support/Command.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

namespace tavrelin {
namespace {

// Shows a package as the real one does, once for each architecture that it is known for.
constexpr const char* kDpkgQuery = R"sh(
show() {
    printf '%b' "$(printf '%s' "$format" | sed "s/\${Architecture}/$1/; s/\${db:Status-Status}/$2/")"
}
format=$3
case $4 in
native) show amd64 installed ;;
both) show amd64 installed; show armhf installed ;;
any) show all installed ;;
foreign) show armhf installed ;;
removed) show amd64 config-files; show armhf installed ;;
*) exit 1 ;;
esac)sh";

TEST(MissingPackages, AreThoseNotInstalledForThisMachineItself) {
    const TestTools tools;
    tools.Install("dpkg", "echo amd64");
    tools.Install("dpkg-query", kDpkgQuery);
    const CommandResult result =
        RunCommand({"bash", "-c",
                    ". '" + InCheckout("scripts/dependencies.sh") +
                        "'; missing_packages native both any foreign removed unknown"});
    EXPECT_EQ(result.output, "foreign removed unknown ");
    EXPECT_EQ(result.error, "");
}

} // namespace
} // namespace tavrelin
