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

/// A number of one or two digits: its value and how many there were. What follows must be readable.
struct ShortNumber {
    int value = 0;
    int digits = 0;
};

ShortNumber ReadShortNumber(const char* at) {
    if (!IsDigit(at[0])) {
        return {};
    }
    return IsDigit(at[1]) ? ShortNumber{(at[0] - '0') * 10 + (at[1] - '0'), 2}
                          : ShortNumber{at[0] - '0', 1};
}

/// Takes a whole number of at most 18 digits; false when there is none.
bool TakeInteger(std::string_view& text, std::int64_t& number) {
    constexpr std::size_t most = 18;
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    std::size_t digits = 0;
    number = 0;
    while (digits < std::min(text.size(), most) && IsDigit(text[digits])) {
        number = number * 10 + (text[digits] - '0');
        ++digits;
    }
    number = negative ? -number : number;
    text.remove_prefix(digits);
    return digits > 0 && (text.empty() || !IsDigit(text.front()));
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
    // Four readings or so share a second.
    if (!secondText_.empty() && line.starts_with(secondText_)) {
        line.remove_prefix(secondText_.size());
        entry.kind = Entry::Kind::Sample;
        entry.time = second_;
        return ParseSample(line, entry);
    }
    const std::string_view whole = line;
    if (!ParseTime(line, entry)) {
        return false;
    }
    if (entry.kind == Entry::Kind::Sample) {
        secondText_ = whole.substr(0, whole.size() - line.size());
        second_ = entry.time;
    }
    return entry.kind == Entry::Kind::Result ? ParseFigures(line, entry.figures)
                                             : ParseSample(line, entry);
}

/// Takes the time with the commas after it, whose kind tells that of the record: a full stop with
/// two digits each side of it, and three commas, or a colon and one.
bool LineParser::ParseTime(std::string_view& text, Entry& entry) {
    constexpr std::size_t shortest = std::string_view("2026-03-07 09:0:0,0,x,,").size();
    if (text.size() < shortest) {
        return false;
    }
    if (std::memcmp(text.data(), date_.data(), kDateLength) != 0) {
        const auto day = ParseIsoTime(text.substr(0, kDateLength));
        if (!day) {
            return false;
        }
        std::copy_n(text.begin(), kDateLength, date_.begin());
        day_ = *day;
    }
    const char* at = text.data() + kDateLength;
    const ShortNumber hour = ReadShortNumber(at + 1);
    if (at[0] != ' ' || hour.digits != 2 || hour.value >= 24 || at[3] != ':') {
        return false;
    }
    at += 4;
    const ShortNumber minute = ReadShortNumber(at);
    at += minute.digits;
    const bool result = *at == '.';
    const ShortNumber second = ReadShortNumber(at + 1);
    const int least = result ? 2 : 1;
    if ((!result && *at != ':') || minute.digits < least || minute.value >= 60 ||
        second.digits < least || second.value > 60) {
        return false;
    }
    at += 1 + second.digits;
    const std::string_view after = result ? ",,," : ",";
    text.remove_prefix(static_cast<std::size_t>(at - text.data()));
    entry.kind = result ? Entry::Kind::Result : Entry::Kind::Sample;
    entry.time =
        day_ + CivilSeconds{hour.value} * 3600 + CivilSeconds{minute.value} * 60 + second.value;
    if (!text.starts_with(after)) {
        return false;
    }
    text.remove_prefix(after.size());
    return true;
}

bool LineParser::ParseSample(std::string_view text, Entry& entry) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (!TakeInteger(text, entry.reading)) {
        return false;
    }
    if (text.empty() || text != tail_) { // most lines are of the same step as the one before
        // A description may hold nearly anything, but no time: that would be a second record.
        if (text.size() < 4 || text.front() != ',' || !text.ends_with(",,") ||
            LastTime(text) != std::string_view::npos) {
            return false;
        }
        tail_ = text;
    }
    entry.step = text.substr(1, text.size() - 3);
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
