#include "simulator/board/KeptState.h"

#include "simulator/board/KernelNumber.h"

#include <sstream>

namespace sim {
namespace {

constexpr const char* kExported = "exported";
constexpr const char* kFree = "free";
constexpr const char* kActiveLow = "active_low";
constexpr const char* kInversed = "inversed";

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
    std::string sense;
    words >> name >> ownership >> drive >> edge >> sense;
    const auto number = Lines::Number(name);
    if (!number) {
        return false;
    }
    board.lines.At(*number).exported = ownership == kExported;
    board.lines.At(*number).activeLow = sense == kActiveLow;
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
    std::string polarity;
    words >> polarity;
    output.exported = ownership == kExported;
    output.inversed = polarity == kInversed;
    board.pwm.At(number) = output;
    board.pwm.onChange();
    return true;
}

bool RestoreWorld(Board& board, const std::string& kind, std::istream& words) {
    const Nanoseconds now = board.Now();
    if (kind == "slot") {
        bool present = false;
        words >> present >> board.card.writeProtected >> board.card.freeBytes;
        if (!present) {
            board.card.Remove(now);
        }
    } else if (kind == "shaft") {
        std::int64_t step = 0;
        words >> step;
        board.PlaceShaft(step);
    } else if (kind == "cell") {
        CellContent content;
        words >> content.absorbance >> content.doseSteps >> content.developing;
        board.cell.Fill(content, now, board.shaft.StepsTurned(now));
    } else if (kind != "clock") {
        return false;
    }
    return !words.fail();
}

} // namespace

std::string KeptState(const Board& board) {
    std::ostringstream text;
    for (unsigned number = 0; number < Lines::kCount; ++number) {
        const Line& line = board.lines.At(number);
        if (line.exported || line.output) {
            text << "line " << Lines::Name(number) << " " << OwnershipOf(line.exported) << " "
                 << DriveOf(line) << " " << WithoutNewline(board.lines.EdgeText(number))
                 << (line.activeLow ? std::string(" ") + kActiveLow : "") << "\n";
        }
    }
    for (unsigned number = 0; number < PwmChip::kCount; ++number) {
        const PwmOutput& output = board.pwm.At(number);
        text << "channel " << number << " " << OwnershipOf(output.exported) << " " << output.period
             << " " << output.duty << " " << output.enabled
             << (output.inversed ? std::string(" ") + kInversed : "") << "\n";
    }
    text << (board.card.mounted ? "card mounted\n" : "");
    return text.str();
}

std::string KeptWorld(const Board& board) {
    const Nanoseconds now = board.Now();
    const CellContent cell = board.cell.Content(now, board.shaft.StepsTurned(now));
    std::ostringstream text;
    text.precision(17);
    text << "slot " << board.card.present << " " << board.card.writeProtected << " "
         << board.card.freeBytes << "\nshaft " << board.shaft.StepOfTurn(now) << "\ncell "
         << cell.absorbance << " " << cell.doseSteps << " " << cell.developing << "\nclock "
         << (board.WallTime() + Seconds(1) - 1) / Seconds(1) << "\n";
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
        } else if (kind == "line"      ? !RestoreLine(board, words)
                   : kind == "channel" ? !RestoreChannel(board, words)
                                       : !RestoreWorld(board, kind, words)) {
            return false;
        }
    }
    return true;
}

} // namespace sim
