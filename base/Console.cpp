#include "base/Console.h"

#include <iostream>
#include <utility>

namespace tavrelin {

void PrintLine(std::string text) {
    text += '\n';
    std::cout << text;
}

void PrintLineAndFlush(std::string text) {
    PrintLine(std::move(text));
    std::cout.flush();
}

} // namespace tavrelin
