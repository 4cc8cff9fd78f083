#pragma once

namespace tavrelin {

/// Called at fixed points with source module, operation and line. Does nothing in the shipped
/// program; a development build or a test links a definition of its own instead.
void Trace(const char* module, const char* operation, int line);

} // namespace tavrelin
