#include "log/Complaint.h"

#include <cerrno>
#include <cstring>
#include <iostream>

namespace tavrelin::daylog {

namespace {

bool complained = false;

} // namespace

void Complain(const std::string& what) {
    complained = true;
    std::cerr << "tavrelin-log: " + what + "\n";
}

void ComplainOfErrno(const std::string& path) {
    Complain(path + ": " + std::strerror(errno));
}

bool Complained() {
    return complained;
}

} // namespace tavrelin::daylog
