// Runs an executable's tests; with --update-golden, golden files are written anew.

#include "tests/support/GoldenFile.h"

#include <gtest/gtest.h>

#include <string_view>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--update-golden") {
            tavrelin::updateGoldenFiles = true;
        }
    }
    return RUN_ALL_TESTS();
}
