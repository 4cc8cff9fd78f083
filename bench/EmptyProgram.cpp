// What a C++ program with a console costs before it does anything.

#include <iostream>

int main() {}
