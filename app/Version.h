#pragma once

#include <string>

namespace tavrelin {

/// The build's version, fixed when it is built.
class Version {
  public:
    /// "0.1.4.47" and a newline. The newline belongs to the value: a status line breaks after it.
    static std::string VersionString();
};

} // namespace tavrelin
