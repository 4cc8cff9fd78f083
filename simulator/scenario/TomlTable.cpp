#include "simulator/scenario/TomlTable.h"

#include <cstdio>

namespace sim {
namespace {

std::string Plain(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", number);
    return text;
}

std::string Range(const std::string& kind, const std::string& least, const std::string& most) {
    return kind + " from " + least + " to " + most;
}

} // namespace

void TomlProblems::Add(const toml::source_region& where, std::string_view key,
                       std::string_view what) {
    if (first.empty()) {
        first = file + ":" + std::to_string(where.begin.line) + ": " + std::string(key) + ": " +
                std::string(what);
    }
}

std::string TomlTable::Full(std::string_view key) const {
    return name_.empty() ? std::string(key) : name_ + "." + std::string(key);
}

const toml::node* TomlTable::Node(std::string_view key) {
    known_.emplace(key);
    return table_.get(key);
}

void TomlTable::Fail(std::string_view key, std::string_view what) {
    const toml::node* node = table_.get(key);
    problems_.Add(node != nullptr ? node->source() : table_.source(), Full(key), what);
}

void TomlTable::Require(std::string_view key) {
    if (!Has(key)) {
        Fail(key, "is missing");
    }
}

template <typename Value>
void TomlTable::ReadExactly(std::string_view key, Value& value, std::string_view takes) {
    const toml::node* node = Node(key);
    if (node == nullptr) {
        return;
    }
    if (const auto given = node->value_exact<Value>()) {
        value = *given;
    } else {
        Fail(key, takes);
    }
}

void TomlTable::Read(std::string_view key, bool& value) {
    ReadExactly(key, value, "takes true or false");
}

void TomlTable::Read(std::string_view key, std::string& value) {
    ReadExactly(key, value, "takes a text in quotes");
}

std::optional<double> TomlTable::NumberOf(const toml::node& node, std::string_view key,
                                          double least, double most) {
    const auto given = node.is_number() ? node.value<double>() : std::nullopt;
    if (!given || !(*given >= least && *given <= most)) {
        problems_.Add(node.source(), Full(key),
                      "takes " + Range("a number", Plain(least), Plain(most)));
        return std::nullopt;
    }
    return given;
}

std::optional<std::int64_t> TomlTable::IntegerOf(const toml::node& node, std::string_view key,
                                                 std::int64_t least, std::int64_t most) {
    const auto given = node.value_exact<std::int64_t>();
    if (!given || *given < least || *given > most) {
        problems_.Add(node.source(), Full(key),
                      "takes " +
                          Range("a whole number", std::to_string(least), std::to_string(most)));
        return std::nullopt;
    }
    return given;
}

std::optional<std::int64_t> TomlTable::WholeNumber(std::string_view key, std::int64_t least,
                                                   std::int64_t most) {
    const toml::node* node = Node(key);
    return node != nullptr ? IntegerOf(*node, key, least, most) : std::nullopt;
}

void TomlTable::Read(std::string_view key, double& value, double least, double most) {
    if (const toml::node* node = Node(key)) {
        if (const auto given = NumberOf(*node, key, least, most)) {
            value = *given;
        }
    }
}

void TomlTable::ReadSeconds(std::string_view key, Nanoseconds& value, double least, double most) {
    double given = static_cast<double>(value) / 1e9;
    if (Has(key)) {
        Read(key, given, least, most);
        value = static_cast<Nanoseconds>(given * 1e6 + (given < 0 ? -0.5 : 0.5)) * 1'000;
    }
}

void TomlTable::ForEach(std::string_view key, const std::function<void(const toml::node&)>& read) {
    const toml::node* node = Node(key);
    if (node == nullptr) {
        return;
    }
    const toml::array* array = node->as_array();
    if (array == nullptr) {
        Fail(key, "takes a list in brackets");
        return;
    }
    for (const toml::node& element : *array) {
        read(element);
    }
}

void TomlTable::ReadStrings(std::string_view key, std::vector<std::string>& values) {
    ForEach(key, [&](const toml::node& node) {
        if (const auto given = node.value_exact<std::string>()) {
            values.push_back(*given);
        } else {
            problems_.Add(node.source(), Full(key), "takes a list of texts in quotes");
        }
    });
}

void TomlTable::ReadNumbers(std::string_view key, std::vector<double>& values, double least,
                            double most) {
    const toml::node* node = Node(key);
    if (node == nullptr) {
        return;
    }
    std::vector<double> given;
    const auto add = [&](const toml::node& element) {
        if (const auto number = NumberOf(element, key, least, most)) {
            given.push_back(*number);
        }
    };
    if (node->is_array()) {
        ForEach(key, add);
    } else {
        add(*node);
    }
    if (given.empty()) {
        Fail(key, "takes at least one number");
    }
    values = given;
}

void TomlTable::Table(std::string_view key, const std::function<void(TomlTable&)>& read) {
    const toml::node* node = Node(key);
    if (node == nullptr) {
        return;
    }
    if (const toml::table* below = node->as_table()) {
        TomlTable reader(*below, Full(key), problems_);
        read(reader);
        reader.Finish();
    } else {
        Fail(key, "is a table: [" + Full(key) + "]");
    }
}

void TomlTable::Tables(std::string_view key, const std::function<void(TomlTable&)>& read) {
    const toml::node* node = Node(key);
    if (node == nullptr) {
        return;
    }
    const toml::array* array = node->as_array();
    if (array == nullptr || !array->is_array_of_tables()) {
        Fail(key, "is a list of tables: [[" + Full(key) + "]]");
        return;
    }
    for (const toml::node& element : *array) {
        TomlTable reader(*element.as_table(), Full(key), problems_);
        read(reader);
        reader.Finish();
    }
}

void TomlTable::Texts(const std::function<void(const std::string&, const std::string&)>& read) {
    for (auto&& [key, node] : table_) {
        known_.emplace(key.str());
        if (const auto given = node.value_exact<std::string>()) {
            read(std::string(key.str()), *given);
        } else {
            Fail(key.str(), "takes a text in quotes");
        }
    }
}

void TomlTable::Finish() {
    for (auto&& [key, node] : table_) {
        if (known_.find(key.str()) == known_.end()) {
            std::string names;
            for (const std::string& name : known_) {
                names += (names.empty() ? "" : ", ") + name;
            }
            problems_.Add(key.source(), Full(key.str()), "unknown key; known here: " + names);
        }
    }
}

} // namespace sim
