#pragma once

#include "simulator/board/Nanoseconds.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace sim {

/// A call of the C library that is made to fail.
struct Fault {
    std::string call; ///< "open", "write", "ioctl", "pthread_create", ...
    std::string path; ///< board path; one that ends in '*' matches all that begin so; empty: any
    std::uint64_t occurrence = 1;       ///< the how-manieth such call on such a path, from 1
    int error = 0;                      ///< errno of the failure; 0: the call is cut short instead
    std::optional<std::uint64_t> bytes; ///< a read or write moves only so many bytes
    bool forever = false;               ///< all later occurrences fail too
};

/// Something that happens to the board from outside at a moment of board time.
struct WorldEvent {
    enum class Kind { RemoveCard, InsertCard, JumpClock, SetInput };

    Nanoseconds at = 0;
    Kind kind = Kind::RemoveCard;
    std::int64_t value = 0; ///< jumpClock: seconds; setInput: level
    unsigned line = 0;      ///< setInput: kernel line number
};

/// What statfs tells of the file system mounted at a directory.
struct FileSystem {
    std::string directory;
    std::int64_t blockSize = 4096;
    std::uint64_t blocks = 0;
    std::uint64_t freeBlocks = 0;
    std::uint64_t availableBlocks = 0;
};

/// In which order threads that could run do run.
enum class ThreadOrder {
    Arrival, ///< first ready, first run; a thread runs until it waits
    Seeded   ///< picked by the seed, with hand-overs at any operation
};

/// Everything that sets one run apart from another: the board's state at the start and what befalls
/// it.
struct Scenario {
    std::vector<double> absorbances{0.25};
    std::int32_t darkCount = 20'000;
    std::int32_t referenceCount = 3'000'000;
    double noise = 0.0; ///< standard deviation of a reading, counts
    std::vector<std::uint32_t> converterWords;

    bool boardPresent = true; ///< false: no line, channel, converter or card slot at all
    bool flagSeen = true;
    bool startOnFlag = false;

    bool cardPresent = true;
    bool cardMounted = false;
    bool cardPartitioned = true;
    bool cardFat = true;
    bool cardWriteProtected = false;
    bool cardReadOnly = false;
    bool mountPointExists = true;
    std::int64_t cardFreeBytes = -1;

    double cableLength = 25.0;       ///< of the remote indicator
    double lampVoltage = 4.0;        ///< of the indicator's lamp under the test colour, volts
    std::string adcScale = "0.0001"; ///< text of the on-board converter's scale attribute
    std::map<int, double> adcInputs; ///< volts at inputs of the on-board converter

    std::vector<FileSystem> fileSystems; ///< mounted ones beside the board's own
    std::vector<std::string> mountTable; ///< lines before the card's own
    bool mountTableExists = true;
    std::vector<std::string> exportedLines; ///< "B18": left behind by an earlier run
    std::vector<unsigned> exportedChannels;
    std::vector<std::string> highInputs;           ///< lines whose pin is pulled high
    std::map<std::string, std::string> attributes; ///< what reading an attribute gives instead
    std::set<std::string> missing;                 ///< paths that are not there

    std::vector<WorldEvent> events;
    std::vector<Fault> faults;
    ThreadOrder threadOrder = ThreadOrder::Arrival;
};

} // namespace sim
