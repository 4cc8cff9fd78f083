#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace contract {

/// A line of the table, split; a call finds an empty text for each word that the line lacks.
using Words = std::vector<std::string>;

/// A word of the table and the number that the kernel has for it.
using Name = std::pair<std::string_view, int>;

/// The numbers that stand for the words between plus signs, joined; what is no name is a number.
template <std::size_t Count>
int Joined(const std::array<Name, Count>& names, const std::string& words) {
    int number = 0;
    std::istringstream list(words);
    for (std::string word; std::getline(list, word, '+');) {
        const auto known = std::find_if(names.begin(), names.end(),
                                        [&](const Name& name) { return name.first == word; });
        number |= known != names.end() ? known->second : std::atoi(word.c_str());
    }
    return number;
}

/// Decimal, or hexadecimal after 0x.
long long Number(const std::string& word);

/// "ok" or the name of errno for the result of a call.
std::string Outcome(long result);
/// The number itself or the name of errno for the result of a call.
std::string Amount(long long result);
/// A text as the table writes it: in quotes, with \n and \xNN.
std::string Quoted(const std::string& text);
/// "file 0644" for what a call of the stat family found, or the name of errno.
std::string TypeAndPermissions(int result, const struct stat& status);
/// What one read at the descriptor's own place or at an offset gave.
std::string ReadOnce(int descriptor, std::size_t size, std::optional<long long> offset = {});

/// The calls on a path, on a descriptor, and those of the bus. "not understood" for an unknown one.
std::string CallOnPath(const std::string& call, const std::string& path, const Words& words);
std::string CallOnDescriptor(const std::string& call, int descriptor, const Words& words);
bool IsCallOnDescriptor(const std::string& call);
std::string SpiRequest(int descriptor, const std::string& request, const std::string& value);
std::string SpiMessage(int descriptor, const Words& records);

} // namespace contract
