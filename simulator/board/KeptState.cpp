#include "simulator/board/KeptState.h"

#include <sstream>

namespace sim {
namespace {

constexpr const char* kExported = "exported";
constexpr const char* kFree = "free";

std::string_view OwnershipOf(bool exported) {
    return exported ? kExported : kFree;
}

/// As the kernel's direction attribute takes it.
std::string_view DriveOf(const Line& line) {
    if (!line.output) {
        return "in";
    }
    return line.level ? "high" : "low";
}

bool RestoreLine(Board& board, std::istream& words) {
    std::string name;
    std::string ownership;
    std::string drive;
    std::string edge;
    words >> name >> ownership >> drive >> edge;
    const auto number = Lines::Number(name);
    if (!number) {
        return false;
    }
    board.lines.At(*number).exported = ownership == kExported;
    // The edge first: an output that watches edges is one that was an input before.
    return board.lines.SetEdge(*number, edge) == 0 && board.lines.SetDirection(*number, drive) == 0;
}

bool RestoreChannel(Board& board, std::istream& words) {
    unsigned number = PwmChip::kCount;
    std::string ownership;
    PwmOutput output;
    if (!(words >> number >> ownership >> output.period >> output.duty >> output.enabled) ||
        number >= PwmChip::kCount) {
        return false;
    }
    output.exported = ownership == kExported;
    board.pwm.At(number) = output;
    board.pwm.onChange();
    return true;
}

} // namespace

std::string KeptState(const Board& board) {
    std::ostringstream text;
    for (unsigned number = 0; number < Lines::kCount; ++number) {
        const Line& line = board.lines.At(number);
        if (line.exported || line.output) {
            text << "line " << Lines::Name(number) << " " << OwnershipOf(line.exported) << " "
                 << DriveOf(line) << " " << board.lines.EdgeText(number);
        }
    }
    for (unsigned number = 0; number < PwmChip::kCount; ++number) {
        const PwmOutput& output = board.pwm.At(number);
        text << "channel " << number << " " << OwnershipOf(output.exported) << " " << output.period
             << " " << output.duty << " " << output.enabled << "\n";
    }
    text << (board.card.mounted ? "card mounted\n" : "");
    return text.str();
}

bool RestoreState(Board& board, const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (line == "card mounted") {
            board.card.mounted = board.card.present;
        } else if (kind == "line" ? !RestoreLine(board, words)
                                  : kind != "channel" || !RestoreChannel(board, words)) {
            return false;
        }
    }
    return true;
}

} // namespace sim
