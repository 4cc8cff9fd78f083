#include "app/RunApplication.h"
#include "app/Version.h"
#include "base/Console.h"

#include <string>

namespace {

// "&" stands for no argument at all; an unknown argument is ignored in silence.
void RunWithArgument(const std::string& argument) {
    if (argument == "--version") {
        tavrelin::PrintLineAndFlush(tavrelin::Version::VersionString());
    }
    if (argument == "&") {
        tavrelin::RunApplication();
    }
}

} // namespace

// The exit status is 0 on every path.
int main(int argc, char* argv[]) {
    if (argc == 1) {
        tavrelin::RunApplication();
    } else if (argc == 2) {
        RunWithArgument(argv[1]);
    }
    return 0;
}
