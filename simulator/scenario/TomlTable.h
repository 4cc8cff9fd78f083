#pragma once

#include "simulator/board/Nanoseconds.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#define TOML_EXCEPTIONS 0
#include <toml++/toml.h>

namespace sim {

/// Seconds, some thirty years: no moment of a scenario is later.
inline constexpr double kLongestRun = 1e9;

/// Collects the first error met while a scenario is read.
struct TomlProblems {
    std::string file;
    std::string first;

    void Add(const toml::source_region& where, std::string_view key, std::string_view what);
    bool Any() const { return !first.empty(); }
};

/// One table of a scenario: typed, range-checked access by key; keys that nobody asked for are
/// errors.
class TomlTable {
  public:
    TomlTable(const toml::table& table, std::string name, TomlProblems& problems)
        : table_(table), name_(std::move(name)), problems_(problems) {}

    void Read(std::string_view key, bool& value);
    void Read(std::string_view key, double& value, double least, double most);
    void Read(std::string_view key, std::string& value);
    void ReadStrings(std::string_view key, std::vector<std::string>& values);
    /// A number or a list of numbers.
    void ReadNumbers(std::string_view key, std::vector<double>& values, double least, double most);

    template <typename Integer>
    void ReadInteger(std::string_view key, Integer& value, std::int64_t least, std::int64_t most) {
        if (const auto number = WholeNumber(key, least, most)) {
            value = static_cast<Integer>(*number);
        }
    }
    template <typename Integer>
    void ReadIntegers(std::string_view key, std::vector<Integer>& values, std::int64_t least,
                      std::int64_t most) {
        ForEach(key, [&](const toml::node& node) {
            if (const auto number = IntegerOf(node, key, least, most)) {
                values.push_back(static_cast<Integer>(*number));
            }
        });
    }
    /// A moment or span given in seconds of board time.
    void ReadSeconds(std::string_view key, Nanoseconds& value, double least, double most);

    /// A table below this one, or nothing when it is not there.
    void Table(std::string_view key, const std::function<void(TomlTable&)>& read);
    /// Every table of an array of tables.
    void Tables(std::string_view key, const std::function<void(TomlTable&)>& read);
    /// Every key with its text.
    void Texts(const std::function<void(const std::string& key, const std::string& text)>& read);

    bool Has(std::string_view key) { return Node(key) != nullptr; }
    void Require(std::string_view key);
    /// Notes an error at a key, or at the table when the key is not there.
    void Fail(std::string_view key, std::string_view what);
    /// Notes an error for each key that was never read.
    void Finish();

  private:
    const toml::node* Node(std::string_view key);
    template <typename Value>
    void ReadExactly(std::string_view key, Value& value, std::string_view takes);
    std::optional<std::int64_t> WholeNumber(std::string_view key, std::int64_t least,
                                            std::int64_t most);
    std::optional<std::int64_t> IntegerOf(const toml::node& node, std::string_view key,
                                          std::int64_t least, std::int64_t most);
    std::optional<double> NumberOf(const toml::node& node, std::string_view key, double least,
                                   double most);
    void ForEach(std::string_view key, const std::function<void(const toml::node&)>& read);
    std::string Full(std::string_view key) const;

    const toml::table& table_;
    std::string name_;
    TomlProblems& problems_;
    std::set<std::string, std::less<>> known_;
};

} // namespace sim
