#pragma once

#include <string>

namespace tavrelin {

/// Writes the text and a newline to standard output in one insertion, so that the lines of two
/// threads never tear. Stays in the stream's buffer.
void PrintLine(std::string text);

/// The same, then flushes standard output.
void PrintLineAndFlush(std::string text);

} // namespace tavrelin
