#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavrelin {

/// One operation on the board.
struct BoardEvent {
    std::int64_t at = 0; ///< microseconds of board time
    int thread = 0;      ///< 1 is the instrument's main thread, 0 the world outside
    std::string what;    ///< operation, path and data
};

std::vector<BoardEvent> ParseEvents(std::string_view log);

/// A stretch of a run: Init, Prime, Search or one step of a measurement.
struct Section {
    std::string name;
    std::vector<BoardEvent> events;

    [[nodiscard]] std::int64_t Begin() const { return events.front().at; }
    [[nodiscard]] std::int64_t Duration() const { return events.back().at - Begin(); }
};

/// Splits a run from the start. Each stretch begins where the main thread is about to announce it
/// or, the search, where it takes the home sensor; the last one goes on to the end.
std::vector<Section> SplitIntoSections(const std::vector<BoardEvent>& events);

/// A section for people to read: a heading with its begin and duration, then a line for each event,
/// whose time counts from the begin.
std::string SectionText(const Section& section);

} // namespace tavrelin
