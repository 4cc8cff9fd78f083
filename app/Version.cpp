#include "app/Version.h"

namespace tavrelin {

std::string Version::VersionString() {
    return "0.1.4.47\n";
}

} // namespace tavrelin
