// A call that the simulated board forgets would reach the machine's own devices in silence. So each
// name of the C library that the program or the C++ library under it may call is one that the board
// answers, or stands in a list of those that cannot do harm.

#include "tests/support/Command.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <link.h>
#include <set>

namespace tavrelin {
namespace {

using Names = std::set<std::string>;

const std::string kProgram = InBuild("bin/tavrelin");
const std::string kSimulatedBoard = InBuild("lib/libsimulated-board.so");

// The file of a library that this process runs with, as the program does.
std::string PathOf(const std::string& library) {
    struct Search {
        const std::string& library;
        std::string path;
    } search{library, ""};
    ::dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t /*size*/, void* data) {
            auto* looking = static_cast<Search*>(data);
            if (std::string(info->dlpi_name).find("/" + looking->library + ".so") !=
                std::string::npos) {
                looking->path = info->dlpi_name;
            }
            return 0;
        },
        &search);
    return search.path;
}

// Symbols as nm lists them, without their versions.
Names Symbols(const std::string& file, const char* which) {
    Names names;
    for (const std::string& line :
         LinesOf(RunCommand({"nm", "-D", "--no-demangle", which, file}).output)) {
        const std::string name = line.substr(line.rfind(' ') + 1);
        names.insert(name.substr(0, name.find('@')));
    }
    return names;
}

Names CalledBy(const std::string& file) {
    return Symbols(file, "--undefined-only");
}

Names DefinedBy(const std::string& file) {
    return Symbols(file, "--defined-only");
}

Names Together(Names names, const Names& others) {
    names.insert(others.begin(), others.end());
    return names;
}

// The names in the list, without its comments.
Names HarmlessNames() {
    Names names;
    for (const std::string& line :
         LinesOf(TextOf(InCheckout("tests/system/harmless-symbols.txt")))) {
        if (!line.empty() && line.front() != '#') {
            EXPECT_TRUE(names.insert(line).second) << line << " stands twice";
        }
    }
    return names;
}

// Those of the C library's names that are called and that the board does not answer.
Names PassedThrough() {
    const Names called = Together(CalledBy(kProgram), CalledBy(PathOf("libstdc++")));
    const Names library = Together(DefinedBy(PathOf("libc")), DefinedBy(PathOf("libm")));
    const Names answered = DefinedBy(kSimulatedBoard);
    Names passed;
    for (const std::string& name : called) {
        if (library.contains(name) && !answered.contains(name)) {
            passed.insert(name);
        }
    }
    return passed;
}

TEST(Symbols, AreReadFromTheFilesThatCount) {
    EXPECT_THAT(CalledBy(kProgram), testing::Contains("pthread_create"));
    EXPECT_THAT(CalledBy(PathOf("libstdc++")), testing::Contains("fopen64"));
    EXPECT_THAT(DefinedBy(PathOf("libc")), testing::Contains("open64"));
    EXPECT_THAT(DefinedBy(PathOf("libm")), testing::Contains("log10"));
    EXPECT_THAT(DefinedBy(kSimulatedBoard), testing::Contains("open64"));
}

// How a stream opens, writes and closes its file, and how the C++ library waits: by system calls
// alone, where these come to a gate.
Names LeftToTheGate() {
#ifdef __x86_64__
    return {
        "fclose",  "fopen64", "pthread_cond_broadcast", "pthread_cond_signal", "pthread_cond_wait",
        "syscall", "writev"};
#else
    return {};
#endif
}

// What the counters of a build for coverage call when the program ends, to keep themselves.
Names CalledByCounters() {
    const std::string defined = RunCommand({"nm", "--defined-only", kProgram}).output;
    if (defined.find(" __gcov_exit") == std::string::npos) {
        return {};
    }
    return {"fcntl", "fopen", "fseek", "getpid", "strcat", "strtol", "vfprintf"};
}

TEST(Symbols, AreAnsweredByTheBoardOrHarmless) {
    const Names harmless = Together(Together(HarmlessNames(), LeftToTheGate()), CalledByCounters());
    for (const std::string& name : PassedThrough()) {
        EXPECT_TRUE(harmless.contains(name))
            << name << " is called, and libsimulated-board.so does not answer it";
    }
}

TEST(HarmlessSymbols, AreNotAnsweredByTheBoard) {
    const Names answered = DefinedBy(kSimulatedBoard);
    for (const std::string& name : HarmlessNames()) {
        EXPECT_FALSE(answered.contains(name)) << name;
    }
}

TEST(HarmlessSymbols, IncludeThoseOfFilesystemBecauseTheProgramDoesNotUseIt) {
    for (const std::string& name : CalledBy(kProgram)) {
        EXPECT_THAT(name, testing::Not(testing::HasSubstr("10filesystem"))) << name;
    }
}

} // namespace
} // namespace tavrelin
