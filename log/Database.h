#pragma once

#include "log/Progress.h"
#include "log/Source.h"
#include "log/Sql.h"

namespace tavrelin::daylog {

/// True when a file begins as one of SQLite's does.
bool IsDatabase(const std::string& path);

/// The first bytes of a file, at most so many; none of what is no file.
std::string BeginOf(const std::string& path, std::size_t most);

/// Makes the tables where there are none; docs/day-files.md has them. False, told by Complain, when
/// the database is not ours.
bool PrepareDatabase(Connection& connection);

/// Visits all entries as the files themselves would give them, in the order of the files' names.
void ReadDatabase(const Source& source, const Visit& visit, Progress& progress);

} // namespace tavrelin::daylog
