#pragma once

#include <cstddef>
#include <string>

namespace tavrelin {

/// Keeps the message until 240 have come, then writes them all to the day's log, in the order in
/// which they came, as they are: a message that is to be a line brings its own newline. Refuses a
/// message of more than 29 characters, and every message while the card is not mounted. Messages
/// that wait when the process ends are lost, and so are those that the log does not take. Used by
/// one thread at a time.
bool BufferedLogWrite(const std::string& message);

/// How many messages wait.
std::size_t BufferedLogPending();

} // namespace tavrelin
