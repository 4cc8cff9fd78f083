#pragma once

#include <string>

namespace sim {

/// What a word that a thread waits on is, to name it in a deadlock.
std::string WhatWordIs(const void* word);

} // namespace sim
