#pragma once

#include <string>

namespace tavrelin::daylog {

/// Lets gnuplot draw a script on its standard output and writes that to a file, whole or not at
/// all. False, told by Complain, when that cannot be done.
bool DrawWithGnuplot(const std::string& script, const std::string& path);

} // namespace tavrelin::daylog
