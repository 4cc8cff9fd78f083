#include "base/Console.h"

#include <iostream>
#include <utility>

namespace tavrelin {

void PrintLine(std::string text) {
    text += '\n'; // not a second insertion: another thread's line could come between
    std::cout << text;
}

void PrintLineAndFlush(std::string text) {
    PrintLine(std::move(text));
    std::cout.flush();
}

} // namespace tavrelin
