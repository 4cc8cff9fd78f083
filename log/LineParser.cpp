#include "log/LineParser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace tavrelin::daylog {

namespace {

constexpr std::size_t kDateLength = 10;
constexpr std::string_view kTimePattern = "0000-00-00 00:";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// True when a text begins as the time of a record does; a shorter one, as far as it goes.
bool BeginsWithTime(std::string_view text) {
    const std::size_t known = std::min(text.size(), kTimePattern.size());
    return std::equal(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(known),
                      kTimePattern.begin(),
                      [](char c, char wanted) { return wanted == '0' ? IsDigit(c) : c == wanted; });
}

/// Where the last time of a record stands in a text; npos when none does.
std::size_t LastTime(std::string_view text) {
    if (text.size() < kTimePattern.size()) {
        return std::string_view::npos;
    }
    for (std::size_t at = text.size() - kTimePattern.size() + 1; at-- > 0;) {
        if (text[at + 4] == '-' && BeginsWithTime(text.substr(at))) {
            return at;
        }
    }
    return std::string_view::npos;
}

bool Take(std::string_view& text, std::string_view expected) {
    if (text.substr(0, expected.size()) != expected) {
        return false;
    }
    text.remove_prefix(expected.size());
    return true;
}

/// Takes a number of one or two digits: its value, at most 99, and how many there were.
struct ShortNumber {
    int value = 0;
    std::size_t digits = 0;
};

ShortNumber TakeShortNumber(std::string_view& text) {
    ShortNumber number;
    while (number.digits < 2 && number.digits < text.size() && IsDigit(text[number.digits])) {
        number.value = number.value * 10 + (text[number.digits] - '0');
        ++number.digits;
    }
    text.remove_prefix(number.digits);
    return number;
}

bool ParseFigures(std::string_view text, Figures& figures) {
    const std::array fields{&figures.absorbance, &figures.chlorine, &figures.dark,
                            &figures.reference, &figures.sample};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (double* field : fields) {
        const auto [rest, error] = std::from_chars(at, end, *field);
        const bool last = field == fields.back();
        if (error != std::errc() || (last ? rest != end : rest == end || *rest != ',')) {
            return false;
        }
        at = rest + 1;
    }
    return true;
}

} // namespace

void LineParser::Feed(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto* const newline =
            static_cast<const char*>(std::memchr(bytes.data(), '\n', bytes.size()));
        if (newline == nullptr) {
            ReadPart(bytes);
            return;
        }
        const auto length = static_cast<std::size_t>(newline - bytes.data());
        if (rest_.empty()) {
            ReadLine(bytes.substr(0, length));
        } else {
            ReadPart(bytes.substr(0, length));
            ReadLine(rest_);
            rest_.clear();
        }
        bytes.remove_prefix(length + 1);
    }
}

void LineParser::Finish() {
    if (!rest_.empty()) {
        ++line_;
        Tell(BeginsWithTime(rest_) ? Entry::Kind::Torn : Entry::Kind::Unknown, rest_);
        rest_.clear();
    }
}

/// Keeps one character more than a line may have, so that it shows that there were more.
void LineParser::ReadPart(std::string_view part) {
    rest_ += part.substr(0, kLongestLine + 1 - std::min(rest_.size(), kLongestLine + 1));
}

void LineParser::ReadLine(std::string_view line) {
    ++line_;
    Entry entry;
    if (line.size() > kLongestLine) {
        Tell(Entry::Kind::Unknown, line.substr(0, kLongestLine));
    } else if (ParseRecord(line, entry)) {
        entry.line = line_;
        take_(entry);
    } else {
        ReadBrokenLine(line);
    }
}

void LineParser::ReadBrokenLine(std::string_view line) {
    Entry entry;
    const std::size_t inner = LastTime(line);
    if (inner != std::string_view::npos && inner > 0 && ParseRecord(line.substr(inner), entry)) {
        Tell(BeginsWithTime(line) ? Entry::Kind::Torn : Entry::Kind::Unknown, line);
        head_ = line.substr(0, inner);
        TellRecovered(entry);
        return;
    }
    const std::string whole = head_ + std::string(line);
    if (!head_.empty() && ParseRecord(whole, entry)) {
        Tell(Entry::Kind::Torn, line);
        TellRecovered(entry);
    } else {
        Tell(!line.empty() && BeginsWithTime(line) ? Entry::Kind::Torn : Entry::Kind::Unknown,
             line);
    }
    head_.clear();
}

bool LineParser::ParseRecord(std::string_view line, Entry& entry) {
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    if (!ParseTime(line, entry)) {
        return false;
    }
    return entry.kind == Entry::Kind::Result ? ParseFigures(line, entry.figures)
                                             : ParseSample(line, entry);
}

/// Takes the time with the commas after it, whose kind tells that of the record: a full stop with
/// two digits each side of it, and three commas, or a colon and one.
bool LineParser::ParseTime(std::string_view& text, Entry& entry) {
    if (text.size() < kTimePattern.size()) {
        return false;
    }
    if (date_.empty() || std::memcmp(text.data(), date_.data(), kDateLength) != 0) {
        const auto day = ParseIsoTime(text.substr(0, kDateLength));
        if (!day) {
            return false;
        }
        date_ = text.substr(0, kDateLength);
        day_ = *day;
    }
    text.remove_prefix(kDateLength);
    if (!Take(text, " ")) {
        return false;
    }
    const ShortNumber hour = TakeShortNumber(text);
    if (!Take(text, ":")) {
        return false;
    }
    const ShortNumber minute = TakeShortNumber(text);
    const bool result = Take(text, ".");
    if (!result && !Take(text, ":")) {
        return false;
    }
    const ShortNumber second = TakeShortNumber(text);
    const std::size_t least = result ? 2 : 1;
    entry.kind = result ? Entry::Kind::Result : Entry::Kind::Sample;
    entry.time = day_ + (hour.value * 60 + minute.value) * 60 + second.value;
    return hour.digits == 2 && hour.value < 24 && minute.digits >= least && minute.value < 60 &&
           second.digits >= least && second.value < 61 && Take(text, result ? ",,," : ",");
}

bool LineParser::ParseSample(std::string_view text, Entry& entry) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, entry.reading);
    if (error != std::errc()) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
    if (text.size() < 4 || text.front() != ',' || text.substr(text.size() - 2) != ",,") {
        return false;
    }
    entry.step = text.substr(1, text.size() - 3);
    return KnownStep(entry.step);
}

/// A description may hold nearly anything, but no time: that would be a second record.
bool LineParser::KnownStep(std::string_view step) {
    constexpr std::size_t most = 64;
    if (std::find(steps_.begin(), steps_.end(), step) != steps_.end()) {
        return true;
    }
    if (LastTime(step) != std::string_view::npos) {
        return false;
    }
    if (steps_.size() < most) {
        steps_.emplace_back(step);
    }
    return true;
}

void LineParser::Tell(Entry::Kind kind, std::string_view text) {
    Entry entry;
    entry.kind = kind;
    entry.text = text;
    entry.line = line_;
    take_(entry);
}

void LineParser::TellRecovered(Entry& entry) {
    entry.line = line_;
    entry.recovered = true;
    take_(entry);
}

} // namespace tavrelin::daylog
