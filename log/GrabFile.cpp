#include "log/GrabFile.h"

#include "log/Complaint.h"
#include "log/Table.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>

namespace tavrelin::daylog {

namespace {

/// Takes the next cell of a line, without the blanks and quotes around it.
std::string_view TakeCell(std::string_view& line) {
    constexpr std::string_view around = " \t\r\"\xEF\xBB\xBF"; // with the byte order mark
    const std::size_t comma = std::min(line.find(','), line.size());
    std::string_view cell = line.substr(0, comma);
    line.remove_prefix(std::min(comma + 1, line.size()));
    if (std::count(cell.begin(), cell.end(), '"') % 2 != 0) {
        return {}; // a comma within quotes: no cell of ours
    }
    cell.remove_prefix(std::min(cell.find_first_not_of(around), cell.size()));
    return cell.substr(0, cell.find_last_not_of(around) + 1);
}

/// An ISO time, or one as the log spells it: 2026-03-07 09:00.17, 2026-03-07 09:0:16.
std::optional<CivilSeconds> ParseTime(std::string text) {
    std::replace(text.begin(), text.end(), '.', ':');
    for (auto at = text.find(':'); at != std::string::npos; at = text.find(':', at + 1)) {
        const std::size_t end = std::min(text.find(':', at + 1), text.size());
        text.insert(at + 1, end == at + 2 ? 1 : 0, '0');
    }
    return ParseIsoTime(text);
}

bool ParseValue(std::string_view text, double& value) {
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && rest == text.data() + text.size() && std::isfinite(value) &&
           value >= 0.0;
}

bool ParseGrab(std::string_view line, Grab& grab) {
    const auto time = ParseTime(std::string(TakeCell(line)));
    grab.time = time.value_or(0);
    return time && ParseValue(TakeCell(line), grab.value);
}

/// An empty line, or a first one that begins with a letter.
bool IsPassedOver(std::string_view line, std::uint64_t number) {
    const std::string_view first = TakeCell(line);
    return first.empty() ? line.empty()
                         : number == 1 && std::isalpha(static_cast<unsigned char>(first[0])) != 0;
}

} // namespace

std::vector<Grab> ReadGrabs(const std::string& path) {
    constexpr std::uint64_t most = 20;
    std::vector<Grab> grabs;
    std::uint64_t number = 0;
    std::uint64_t bad = 0;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        ++number;
        Grab grab;
        if (ParseGrab(line, grab)) {
            grabs.push_back(grab);
        } else if (!IsPassedOver(line, number) && ++bad <= most) {
            Complain(path + ":" + std::to_string(number) +
                     ": not a time and a value, such as 2026-03-07T09:00,0.85: " + Shown(line));
        }
    }
    if (!file.is_open() || file.bad()) {
        ComplainOfErrno(path);
    }
    if (bad > most) {
        Complain(path + ": and " + std::to_string(bad - most) + " more such lines");
    }
    if (grabs.empty()) {
        Complain(path + ": no grab sample in it");
    }
    std::stable_sort(grabs.begin(), grabs.end(),
                     [](const Grab& a, const Grab& b) { return a.time < b.time; });
    return grabs;
}

} // namespace tavrelin::daylog
