#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrelin {

/// Whether a line's or channel's directory is there and may be read, which is what exported means.
/// Costs one system call.
bool AttributeDirectoryExists(const std::string& directory);

/// Opens the attribute with truncation, writes the text in one write (one store for the kernel) and
/// closes. Only the open decides: false when it fails. What the driver says to the text is ignored,
/// because a channel that was never programmed refuses most of them. Costs three system calls.
bool WriteAttribute(const std::string& path, std::string_view text);

/// First whitespace-delimited word of the attribute's first 4096 bytes (a page, the longest that
/// the kernel hands out); empty when there is none, nothing when the open fails. Costs three system
/// calls.
std::optional<std::string> ReadAttributeWord(const std::string& path);

} // namespace tavrelin
