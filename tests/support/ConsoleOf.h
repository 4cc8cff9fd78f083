#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <string>

namespace tavrelin {

/// What standard output gets while `action` runs.
template <typename Action>
std::string ConsoleOf(Action action) {
    std::cout.flush();
    testing::internal::CaptureStdout();
    action();
    std::cout.flush();
    return testing::internal::GetCapturedStdout();
}

} // namespace tavrelin
