#pragma once

#include "log/CivilTime.h"

#include <string>
#include <vector>

namespace tavrelin::daylog {

/// A grab sample, and the result that is nearest to it so far.
struct Grab {
    CivilSeconds time = 0;
    double value = 0.0;
    bool found = false;
    CivilSeconds resultTime = 0;
    double result = 0.0;
};

/// The grab samples of a file by their times; the lines that are none are told by Complain.
std::vector<Grab> ReadGrabs(const std::string& path);

} // namespace tavrelin::daylog
