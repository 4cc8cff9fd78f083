#include "simulator/scenario/TomlTable.h"

#include <cstdio>

namespace sim {
namespace {

std::string plain(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", number);
    return text;
}

std::string range(const std::string& kind, const std::string& least, const std::string& most) {
    return kind + " from " + least + " to " + most;
}

} // namespace

void TomlProblems::add(const toml::source_region& where, std::string_view key,
                       std::string_view what) {
    if (first.empty()) {
        first = file + ":" + std::to_string(where.begin.line) + ": " + std::string(key) + ": " +
                std::string(what);
    }
}

std::string TomlTable::full(std::string_view key) const {
    return name_.empty() ? std::string(key) : name_ + "." + std::string(key);
}

const toml::node* TomlTable::take(std::string_view key) {
    known_.emplace(key);
    return table_.get(key);
}

void TomlTable::fail(std::string_view key, std::string_view what) {
    const toml::node* node = table_.get(key);
    problems_.add(node != nullptr ? node->source() : table_.source(), full(key), what);
}

void TomlTable::require(std::string_view key) {
    if (!has(key)) {
        fail(key, "is missing");
    }
}

void TomlTable::read(std::string_view key, bool& value) {
    if (const toml::node* node = take(key)) {
        if (const auto given = node->value_exact<bool>()) {
            value = *given;
        } else {
            fail(key, "takes true or false");
        }
    }
}

std::optional<double> TomlTable::numberOf(const toml::node& node, std::string_view key,
                                          double least, double most) {
    const auto given = node.is_number() ? node.value<double>() : std::nullopt;
    if (!given || !(*given >= least && *given <= most)) {
        problems_.add(node.source(), full(key),
                      "takes " + range("a number", plain(least), plain(most)));
        return std::nullopt;
    }
    return given;
}

std::optional<std::int64_t> TomlTable::integerOf(const toml::node& node, std::string_view key,
                                                 std::int64_t least, std::int64_t most) {
    const auto given = node.value_exact<std::int64_t>();
    if (!given || *given < least || *given > most) {
        problems_.add(node.source(), full(key),
                      "takes " +
                          range("a whole number", std::to_string(least), std::to_string(most)));
        return std::nullopt;
    }
    return given;
}

std::optional<std::int64_t> TomlTable::integer(std::string_view key, std::int64_t least,
                                               std::int64_t most) {
    const toml::node* node = take(key);
    return node != nullptr ? integerOf(*node, key, least, most) : std::nullopt;
}

void TomlTable::read(std::string_view key, double& value, double least, double most) {
    if (const toml::node* node = take(key)) {
        if (const auto given = numberOf(*node, key, least, most)) {
            value = *given;
        }
    }
}

void TomlTable::readSeconds(std::string_view key, Nanoseconds& value, double least, double most) {
    double given = static_cast<double>(value) / 1e9;
    if (has(key)) {
        read(key, given, least, most);
        value = static_cast<Nanoseconds>(given * 1e6 + (given < 0 ? -0.5 : 0.5)) * 1'000;
    }
}

void TomlTable::read(std::string_view key, std::string& value) {
    if (const toml::node* node = take(key)) {
        if (const auto given = node->value_exact<std::string>()) {
            value = *given;
        } else {
            fail(key, "takes a text in quotes");
        }
    }
}

void TomlTable::forEach(std::string_view key, const std::function<void(const toml::node&)>& read) {
    const toml::node* node = take(key);
    if (node == nullptr) {
        return;
    }
    const toml::array* array = node->as_array();
    if (array == nullptr) {
        fail(key, "takes a list in brackets");
        return;
    }
    for (const toml::node& element : *array) {
        read(element);
    }
}

void TomlTable::readStrings(std::string_view key, std::vector<std::string>& values) {
    forEach(key, [&](const toml::node& node) {
        if (const auto given = node.value_exact<std::string>()) {
            values.push_back(*given);
        } else {
            problems_.add(node.source(), full(key), "takes a list of texts in quotes");
        }
    });
}

void TomlTable::readNumbers(std::string_view key, std::vector<double>& values, double least,
                            double most) {
    const toml::node* node = take(key);
    if (node == nullptr) {
        return;
    }
    std::vector<double> given;
    const auto add = [&](const toml::node& element) {
        if (const auto number = numberOf(element, key, least, most)) {
            given.push_back(*number);
        }
    };
    if (node->is_array()) {
        forEach(key, add);
    } else {
        add(*node);
    }
    if (given.empty()) {
        fail(key, "takes at least one number");
    }
    values = given;
}

void TomlTable::table(std::string_view key, const std::function<void(TomlTable&)>& read) {
    const toml::node* node = take(key);
    if (node == nullptr) {
        return;
    }
    if (const toml::table* below = node->as_table()) {
        TomlTable reader(*below, full(key), problems_);
        read(reader);
        reader.finish();
    } else {
        fail(key, "is a table: [" + full(key) + "]");
    }
}

void TomlTable::tables(std::string_view key, const std::function<void(TomlTable&)>& read) {
    const toml::node* node = take(key);
    if (node == nullptr) {
        return;
    }
    const toml::array* array = node->as_array();
    if (array == nullptr || !array->is_array_of_tables()) {
        fail(key, "is a list of tables: [[" + full(key) + "]]");
        return;
    }
    for (const toml::node& element : *array) {
        TomlTable reader(*element.as_table(), full(key), problems_);
        read(reader);
        reader.finish();
    }
}

void TomlTable::texts(const std::function<void(const std::string&, const std::string&)>& read) {
    for (auto&& [key, node] : table_) {
        known_.emplace(key.str());
        if (const auto given = node.value_exact<std::string>()) {
            read(std::string(key.str()), *given);
        } else {
            fail(key.str(), "takes a text in quotes");
        }
    }
}

void TomlTable::finish() {
    for (auto&& [key, node] : table_) {
        if (known_.find(key.str()) == known_.end()) {
            std::string names;
            for (const std::string& name : known_) {
                names += (names.empty() ? "" : ", ") + name;
            }
            problems_.add(key.source(), full(key.str()), "unknown key; known here: " + names);
        }
    }
}

} // namespace sim
