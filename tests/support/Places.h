#pragma once

#include <string>

namespace tavrelin {

/// A file of the checkout, by its path there ("tests/system/golden/log.csv").
std::string InCheckout(const std::string& path);

/// A file of the build folder ("bin/tavrelin").
std::string InBuild(const std::string& path);

} // namespace tavrelin
