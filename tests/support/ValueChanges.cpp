#include "tests/support/ValueChanges.h"

#include "tests/support/Text.h"

#include <algorithm>

namespace tavrelin {

namespace {

/// Texts hold blanks as octal digits, as in "\040".
std::string Unescaped(const std::string& text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\') {
            plain += static_cast<char>(std::stoi(text.substr(at + 1, 3), nullptr, 8));
            at += 3;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

class Reader {
  public:
    ValueChanges Read(const std::string& text) {
        Expect(!text.empty() && text.back() == '\n', "no newline at the end");
        for (const std::string& line : LinesOf(text)) {
            line_ = line;
            defined_ ? ReadChange() : ReadDefinition(Split(line, ' '));
        }
        Expect(defined_ && dumped_ == 2, "no $enddefinitions, or initial values without an end");
        for (const auto& [id, name] : names_) {
            Expect(!read_.values[name].empty() && read_.values[name].front().first == 0,
                   name + " has no initial value");
        }
        return read_;
    }

  private:
    void Expect(bool right, const std::string& problem) {
        if (!right) {
            read_.problems.push_back(problem + ": " + line_);
        }
    }

    void ReadDefinition(std::vector<std::string> words) {
        Expect(words.size() >= 2 && words.back() == "$end", "not one definition a line");
        words.pop_back();
        if (words[0] == "$scope") {
            scopes_.push_back(words.at(2));
        } else if (words[0] == "$upscope") {
            scopes_.pop_back();
        } else if (words[0] == "$var") {
            Expect(words.size() == 5 && names_.emplace(words.at(3), words.at(4)).second &&
                       read_.values.try_emplace(words.at(4)).second,
                   "not a variable of its own");
            read_.types[scopes_.back() + "/" + words.at(4)] = words.at(1) + " " + words.at(2);
        } else {
            defined_ = words[0] == "$enddefinitions";
            Expect(!defined_ || scopes_.empty(), "open scopes");
            const std::size_t blank = line_.find(' ');
            read_.notes[words[0]] = line_.substr(blank + 1, line_.size() - blank - 6);
        }
    }

    void ReadChange() {
        if (line_[0] == '#') {
            const std::int64_t time = std::stoll(line_.substr(1));
            Expect(time > time_, "time does not go on");
            read_.end = time_ = time;
        } else if (line_[0] == '$') {
            Expect(line_ == (dumped_ == 0 ? "$dumpvars" : "$end") && time_ == 0, "unexpected");
            ++dumped_;
        } else {
            const bool wire = std::string("01z").find(line_[0]) != std::string::npos;
            const std::size_t id = wire ? 1 : line_.find(' ') + 1;
            const auto name = names_.find(line_.substr(id));
            Expect(time_ >= 0 && name != names_.end() &&
                       (wire || line_[0] == 'r' || line_[0] == 's'),
                   "no value of a variable");
            if (name != names_.end()) {
                read_.values[name->second].emplace_back(
                    time_, wire ? line_.substr(0, 1) : Unescaped(line_.substr(1, id - 2)));
            }
        }
    }

    ValueChanges read_;
    std::string line_;
    std::vector<std::string> scopes_;
    std::map<std::string, std::string> names_; ///< by their identifiers
    bool defined_ = false;
    int dumped_ = 0;
    std::int64_t time_ = -1;
};

} // namespace

std::vector<std::pair<std::int64_t, bool>> ValueChanges::Edges(const std::string& name) const {
    std::vector<std::pair<std::int64_t, bool>> edges;
    bool before = false;
    for (const auto& [at, value] : values.at(name)) {
        const bool level = value == "1";
        if (level != before) {
            edges.emplace_back(at, level);
            before = level;
        }
    }
    return edges;
}

std::vector<std::int64_t> ValueChanges::Moments(const std::string& name, bool level) const {
    std::vector<std::int64_t> moments;
    for (const auto& [at, to] : Edges(name)) {
        if (to == level) {
            moments.push_back(at);
        }
    }
    return moments;
}

ValueChanges ReadValueChanges(const std::string& text) {
    return Reader().Read(text);
}

} // namespace tavrelin
