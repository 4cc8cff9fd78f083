#include "tests/system/EventLog.h"

#include "tests/support/Text.h"

#include <cstddef>
#include <iomanip>
#include <sstream>

namespace tavrelin {

namespace {

constexpr int kMainThread = 1;

// A status line asks whether the card is mounted before it shows anything.
bool IsStatusLine(const BoardEvent& event) {
    return event.thread == kMainThread && event.what.rfind("setmntent ", 0) == 0;
}

bool TakesHomeSensor(const BoardEvent& event) {
    return event.thread == kMainThread &&
           event.what.rfind("access /sys/class/gpio/pioB18 ", 0) == 0;
}

// A step's status line is the one after which workers start at once.
bool BeginsStep(const std::vector<BoardEvent>& events, std::size_t index) {
    return IsStatusLine(events[index]) && index + 1 < events.size() &&
           events[index + 1].what.rfind("thread-start ", 0) == 0;
}

// The name of the section that begins at an event; empty when none does.
std::string BeginningAt(const std::vector<BoardEvent>& events, std::size_t index, int stepsBefore) {
    if (index == 0) {
        return "Init";
    }
    if (BeginsStep(events, index)) {
        return "Step " + std::to_string(stepsBefore + 1);
    }
    if (stepsBefore == 0 && IsStatusLine(events[index])) {
        return "Prime";
    }
    return stepsBefore == 0 && TakesHomeSensor(events[index]) ? "Search" : "";
}

} // namespace

std::vector<BoardEvent> ParseEvents(std::string_view log) {
    std::vector<BoardEvent> events;
    for (const std::string& line : LinesOf(log)) {
        std::istringstream fields(line);
        BoardEvent event;
        fields >> event.at >> event.thread >> std::ws;
        std::getline(fields, event.what);
        events.push_back(event);
    }
    return events;
}

std::vector<Section> SplitIntoSections(const std::vector<BoardEvent>& events) {
    std::vector<Section> sections;
    int steps = 0;
    for (std::size_t index = 0; index < events.size(); ++index) {
        const std::string name = BeginningAt(events, index, steps);
        if (!name.empty()) {
            sections.push_back({name, {}});
            steps += name.rfind("Step", 0) == 0 ? 1 : 0;
        }
        sections.back().events.push_back(events[index]);
    }
    return sections;
}

std::string SectionText(const Section& section) {
    const std::int64_t begin = section.Begin();
    std::ostringstream text;
    text << "# " << section.name << ": from " << begin << " us of board time, lasts "
         << section.Duration() << " us\n#  us  thread  operation path data\n";
    for (const BoardEvent& event : section.events) {
        text << std::setw(7) << event.at - begin << std::setw(4) << event.thread << "  "
             << event.what << "\n";
    }
    return text.str();
}

} // namespace tavrelin
