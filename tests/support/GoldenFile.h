#pragma once

#include <gtest/gtest.h>

#include <string>

namespace tavrelin {

/// Whether golden files are written anew instead of compared; set by the option --update-golden.
extern bool updateGoldenFiles;

/// The first line in which two texts differ, as both have it; empty for equal texts.
std::string FirstDifference(const std::string& expected, const std::string& found);

/// Compares a text with a file below tests/ ("system/golden/log.csv"), or writes it anew; a
/// difference is told by its first line.
testing::AssertionResult MatchesGoldenFile(const std::string& text, const std::string& name);

} // namespace tavrelin
