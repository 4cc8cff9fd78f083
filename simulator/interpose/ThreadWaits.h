#pragma once

#include <string>

namespace sim {

/// What a word that a thread waits on is, to name it in a deadlock.
std::string WhatWordIs(const void* word);

/// Lets threads that have ended their part in the run be gone altogether: until then they may hold
/// locks of the C library's own, in real time. Gives up when they have waited in turn for a moment.
/// Allocates nothing: the caller may be inside the allocator.
void AwaitEndedThreads();

} // namespace sim
