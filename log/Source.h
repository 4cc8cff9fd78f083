#pragma once

#include "log/Entry.h"

#include <cstdint>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace tavrelin::daylog {

/// A day's file, or a database of imported ones, with its size in bytes as it was found.
struct Source {
    std::string path;
    std::uint64_t bytes = 0;
};

/// The sources that the paths name, in their order: of a folder the day's files directly in it, by
/// name. What is missing or cannot be listed is told by Complain.
std::vector<Source> FindSources(const std::vector<std::string>& paths);

std::uint64_t TotalBytes(const std::vector<Source>& sources);

/// Visits every entry of every source, in their order, and tells on a terminal how far it has come.
/// What cannot be read is told by Complain; the rest is read all the same.
void ReadSources(const std::vector<Source>& sources, const Visit& visit);

/// The same of what the paths name, records only. How many lines were none is told by Complain.
void ReadRecords(const std::vector<std::string>& paths, const Visit& visit);

/// Hands a file on in pieces, from its begin. False when it cannot be read to its end, which
/// Complain has told.
bool ReadFile(const std::string& path, const std::function<void(std::string_view)>& take);

/// True for names such as 2026-03-07_logfile.csv.
bool IsDayFile(const std::string& name);
/// Paths of the day's files directly in a folder, by name; those found until an error.
std::vector<std::string> DayFilesIn(const std::string& folder, std::error_code& error);

/// The last part of a path.
std::string FileName(const std::string& path);

} // namespace tavrelin::daylog
