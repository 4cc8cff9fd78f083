#pragma once

#include <string>

/// How deep the stacks of the program's threads go, with the frames of the simulated board on them.
namespace sim::stacks {

/// Set before the program begins, if at all.
inline bool wanted = false;

/// The calling thread begins to work at a function, null for the main thread: paints 64 KiB of its
/// stack.
void Begin(const void* function);
/// It ends: what it has painted over counts for its function.
void End();
/// The most bytes for each function, as "program+0x1234 bytes" lines; the main thread is "main".
std::string Table();

} // namespace sim::stacks
