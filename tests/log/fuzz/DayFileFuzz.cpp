// Feeds arbitrary bytes to the reader of day's files, whole and in two pieces, and to all that is
// made of its entries. Run by scripts/fuzz; corpus/ holds what a fresh run begins with.

#include "log/Flag.h"
#include "log/LineParser.h"
#include "log/Table.h"
#include "log/Zone.h"

#include "tests/support/FuzzInput.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tavrelin::daylog;
using tavrelin::Hold;

struct Reading {
    std::uint64_t lines = 0;
    std::vector<std::string> entries;
};

Reading Read(const std::vector<std::string_view>& pieces) {
    Reading reading;
    ZonedClock clock;
    LineParser parser([&](const Entry& entry) {
        reading.lines += entry.recovered ? 0 : 1;
        reading.entries.push_back(std::to_string(entry.line) + FlagText(FlagOf(entry.figures)) +
                                  (entry.IsRecord() ? IsoText(clock.At(entry.time)) : "") +
                                  JsonText(entry.text) + JsonText(entry.step));
    });
    for (const std::string_view piece : pieces) {
        parser.Feed(piece);
    }
    parser.Finish();
    return reading;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const Reading whole = Read({text});
    const auto newlines = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
    Hold(whole.lines == newlines + (text.empty() || text.back() == '\n' ? 0 : 1));
    const std::size_t cut = size == 0 ? 0 : data[0] % size;
    Hold(Read({text.substr(0, cut), text.substr(cut)}).entries == whole.entries);
    return 0;
}
