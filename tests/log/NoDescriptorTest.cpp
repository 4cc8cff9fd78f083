// What cannot be opened because the process has all the descriptors that it may have is told.

#include "log/Gnuplot.h"
#include "log/Source.h"
#include "log/Table.h"

#include "tests/support/CapturedConsole.h"
#include "tests/support/TestFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

namespace tavrelin::daylog {
namespace {

// Everything that was said while no file could be opened.
template <typename Action>
std::string SaidWithoutADescriptor(Action action) {
    CapturedConsole console;
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{3, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    action();
    ::setrlimit(RLIMIT_NOFILE, &before);
    return console.Error();
}

TEST(WithoutADescriptor, FilesFoldersAndScriptsAreNamed) {
    const TestFolder folder;
    const std::string path = folder.Path("day");
    const std::string why = ": Too many open files\n";
    EXPECT_EQ(SaidWithoutADescriptor([&] { FindSources({folder.Path()}); }),
              "tavrelin-log: " + folder.Path() + why);
    EXPECT_EQ(SaidWithoutADescriptor([&] { ReadFile(path, [](std::string_view) {}); }),
              "tavrelin-log: " + path + why);
    EXPECT_EQ(SaidWithoutADescriptor([&] { DrawWithGnuplot("plot x", path); }),
              "tavrelin-log: the script for gnuplot" + why);
}

TEST(JsonText, KeepsWholeCharactersOnly) {
    EXPECT_EQ(JsonText("Spülen \xe6\xb0\xb4"), "\"Spülen \xe6\xb0\xb4\"");
    EXPECT_EQ(JsonText("\xc3"), "\"\\ufffd\"");
}

} // namespace
} // namespace tavrelin::daylog
