#pragma once

#include "simulator/testing/SimulatedBoard.h"

#include <initializer_list>

namespace tavrelin {

/// What happened, one after the other.
inline sim::Texts InOrder(std::initializer_list<sim::Texts> parts) {
    sim::Texts whole;
    for (const sim::Texts& part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

} // namespace tavrelin
