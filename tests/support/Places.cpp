#include "tests/support/Places.h"

namespace tavrelin {

std::string InCheckout(const std::string& path) {
    return TAVRELIN_SOURCE_DIR "/" + path;
}

std::string InBuild(const std::string& path) {
    return TAVRELIN_BUILD_DIR "/" + path;
}

} // namespace tavrelin
