#pragma once

#include <gtest/gtest.h>

#include <string>

namespace tavrelin {

/// Compares a text with the file of this name in this room's golden/, or writes it anew: see
/// README.md. A difference is told by its first line.
testing::AssertionResult MatchesGoldenText(const std::string& text, const std::string& name);

} // namespace tavrelin
