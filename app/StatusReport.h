#pragma once

#include <string>

namespace tavrelin {

/// Writes a status line to standard output in one insertion and flushes it: product, local time,
/// value with three decimals, whether the card is mounted, version, message. The version's newline
/// breaks it after the fifth field.
void ReportStatus(float value, const std::string& message);

} // namespace tavrelin
