#pragma once

#include "tests/support/TestFolder.h"

#include <filesystem>
#include <fstream>

namespace tavrelin {

/// The same under the name that it had.
class TemporaryFolder : public TestFolder {
  public:
    [[nodiscard]] std::string File(const std::string& name) const { return Path(name); }
};

} // namespace tavrelin
