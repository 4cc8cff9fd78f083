#pragma once

#include <string>

namespace tavrelin::daylog {

/// Exit statuses of tavrelin-log.
inline constexpr int kDone = 0;
inline constexpr int kFound =
    1; ///< something is wrong with the data, or could not be read or written
inline constexpr int kWrongUsage = 2;

/// Says in one line on standard error what is wrong and where.
void Complain(const std::string& what);
/// The same with the C library's word for errno: "PATH: No such file or directory".
void ComplainOfErrno(const std::string& path);
/// True after any complaint.
bool Complained();

} // namespace tavrelin::daylog
