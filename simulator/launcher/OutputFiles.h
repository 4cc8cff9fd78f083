#pragma once

#include "simulator/kernel/BufferedFile.h"
#include "simulator/launcher/Options.h"

#include <string>

namespace sim {

/// Puts something that takes and gives nothing in the place of a closed standard input or output,
/// which the next file that is opened would become.
void FillStandardDescriptors();

/// What is wrong with the files that the run is to write: no file can be made, or it is another of
/// them, the scenario or the program. Empty when nothing is.
std::string OutputProblem(const LauncherOptions& options, const std::string& program);

/// Appends what a program that was stopped could not write itself. False, with a line that says
/// where the file ends, when it does not hold the whole run.
bool SaveRest(const std::string& option, const std::string& path, const FileBuffer& rest);

/// Writes a file anew; does nothing without a path. False, with a line that says why, when it does
/// not hold the whole text.
bool Save(const std::string& option, const std::string& path, const std::string& text);

} // namespace sim
