#include "tests/support/GoldenFile.h"

#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <algorithm>

namespace tavrelin {

bool updateGoldenFiles = false;

namespace {

std::string LineOrEnd(const std::vector<std::string>& lines, std::size_t index) {
    return index < lines.size() ? lines[index] : "(no more lines)";
}

} // namespace

std::string FirstDifference(const std::string& expected, const std::string& found) {
    if (expected == found) {
        return "";
    }
    const std::vector<std::string> wanted = LinesOf(expected);
    const std::vector<std::string> got = LinesOf(found);
    std::size_t index = 0;
    while (index < std::min(wanted.size(), got.size()) && wanted[index] == got[index]) {
        ++index;
    }
    return "line " + std::to_string(index + 1) + "\n  expected: " + LineOrEnd(wanted, index) +
           "\n  found:    " + LineOrEnd(got, index);
}

testing::AssertionResult MatchesGoldenFile(const std::string& text, const std::string& name) {
    const std::string path = InCheckout("tests/" + name);
    if (updateGoldenFiles) {
        WriteText(path, text);
    }
    const std::string golden = TextOf(path);
    if (golden == text) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << name << " differs first in " << FirstDifference(golden, text)
           << "\nIf the change is meant: run this test with --update-golden, then read the "
              "difference.";
}

} // namespace tavrelin
