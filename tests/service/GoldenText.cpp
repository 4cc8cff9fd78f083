#include "tests/service/GoldenText.h"

#include "tests/system/GoldenFile.h"
#include "tests/system/TemporaryFolder.h"

namespace tavrelin {

testing::AssertionResult MatchesGoldenText(const std::string& text, const std::string& name) {
    const std::string path = std::string(TAVRELIN_SOURCE_DIR) + "/tests/service/golden/" + name;
    if (updateGoldenFiles) {
        WriteText(path, text);
    }
    const std::string golden = TextOf(path);
    if (golden == text) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << name << " differs first in " << FirstDifference(golden, text)
           << "\nIf the change is meant: service_tests --update-golden, then read the difference.";
}

} // namespace tavrelin
