// hardware_contract [GROUP...]: makes the calls of the table and compares what comes of them. The
// same program runs on the simulated board and on a real kernel.

#include "tests/kernel/contract/Caller.h"
#include "tests/kernel/contract/Contract.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace contract {
namespace {

constexpr std::array kGroups{
    Group{"lines", kLines},
    Group{"line-attributes", kLineAttributes},
    Group{"channels", kChannels},
    Group{"converter", kConverter},
    Group{"analog", kAnalog},
    Group{"memory", kMemory},
    Group{"card", kCard},
    Group{"card-files", kCardFiles},
    Group{"card-names", kCardNames},
    Group{"folders", kFolders},
    Group{"pulled", kPulled, false},
    Group{"no-card", kNoCard, false},
    Group{"no-fat", kNoFat, false},
    Group{"no-partition", kNoPartition, false},
    Group{"locked", kLocked, false},
};

struct Count {
    int cases = 0;
    int failed = 0;
};

/// Splits at blanks outside of quotes, and takes the quotes and their escapes away.
Words Split(std::string_view line) {
    Words words;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == ' ') {
            continue;
        }
        std::string word;
        const bool quoted = line[i] == '"';
        for (i += quoted ? 1 : 0; i < line.size() && line[i] != (quoted ? '"' : ' '); ++i) {
            if (quoted && line[i] == '\\') {
                ++i;
                word += line[i] == 'n' ? '\n' : line[i];
            } else {
                word += line[i];
            }
        }
        words.push_back(word);
    }
    return words;
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t from = std::min(text.find_first_not_of(' '), text.size());
    const std::size_t to = text.find_last_not_of(' ') + 1;
    return text.substr(from, to > from ? to - from : 0);
}

bool Meets(std::string_view answer, std::string_view expected) {
    return expected.ends_with('*') ? answer.starts_with(expected.substr(0, expected.size() - 1))
                                   : answer == expected;
}

Count Run(const Group& group) {
    Count count;
    Caller caller;
    std::istringstream lines(group.cases);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t arrow = line.rfind(" -> ");
        const std::string_view call = Trimmed(std::string_view(line).substr(0, arrow));
        if (call.empty() || call.starts_with('#')) {
            continue;
        }
        const std::string answer = caller.Make(Split(call));
        if (arrow == std::string::npos) { // "in FOLDER"
            continue;
        }
        const std::string expected(Trimmed(std::string_view(line).substr(arrow + 4)));
        const std::string shown = std::string(group.name) + ": " + std::string(call);
        ++count.cases;
        if (Meets(answer, expected)) {
            std::printf("ok %s\n", shown.c_str());
        } else {
            ++count.failed;
            std::printf("FAILED %s: expected %s, got %s\n", shown.c_str(), expected.c_str(),
                        answer.c_str());
        }
    }
    return count;
}

} // namespace
} // namespace contract

int main(int argc, char** argv) {
    const std::vector<std::string_view> wanted(argv + 1, argv + argc);
    contract::Count all;
    for (const contract::Group& group : contract::kGroups) {
        if (wanted.empty() ? group.onAnyBoard : std::ranges::count(wanted, group.name) != 0) {
            const contract::Count count = contract::Run(group);
            all.cases += count.cases;
            all.failed += count.failed;
        }
    }
    std::printf("%d cases, %d failed\n", all.cases, all.failed);
    return all.cases == 0 || all.failed != 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}
