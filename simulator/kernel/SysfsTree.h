#pragma once

#include "simulator/board/Board.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// What differs from the board's own paths.
struct PathChanges {
    std::map<std::string, std::string> replaced; ///< what reading an attribute gives instead
    std::set<std::string> missing;               ///< not there, with all below
};

/// What every attribute's file tells as its size: a page, however short its text.
inline constexpr std::int64_t kAttributeSize = 4096;

/// What stands at a path of the kernel's attribute tree.
struct SysfsNode {
    /// BelowAttribute: missing because what it should lie in is no directory.
    enum class Kind { Missing, BelowAttribute, Directory, Attribute };

    /// A directory, reached through a symbolic link or not.
    static SysfsNode Directory(bool link = false);

    /// 0, or the errno of a call that looks for it.
    int Error() const;
    /// Type and permissions, of the link itself or of what it leads to.
    unsigned Mode(bool followLinks) const;

    Kind kind = Kind::Missing;
    bool parentExists = false;         ///< for a missing one: EACCES instead of ENOENT on creation
    bool link = false;                 ///< a directory that is reached through a symbolic link
    std::function<std::string()> show; ///< empty: cannot be opened for reading
    int showError = 0;                 ///< errno of every reading
    std::function<int(std::string_view)>
        store;                    ///< empty: cannot be opened for writing; gives an errno
    std::optional<unsigned> line; ///< the line whose level this attribute is
    unsigned instance = 0;        ///< which export of its line or channel it came with
};

/// The GPIO, PWM, analog converter and block device attributes of the board as sysfs shows them.
class SysfsTree {
  public:
    SysfsTree(Board& board, PathChanges changes) : board_(board), changes_(std::move(changes)) {}

    SysfsNode Find(std::string_view path) const;
    /// The names of what lies in a directory.
    std::vector<std::string> Names(const std::string& directory) const;

    /// Reading the attribute gives this text from now on.
    void Replace(const std::string& path, const std::string& text) {
        changes_.replaced[path] = text;
    }
    /// The text that was put in place of the path's own; null when there is none.
    const std::string* Replacement(const std::string& path) const {
        const auto found = changes_.replaced.find(path);
        return found != changes_.replaced.end() ? &found->second : nullptr;
    }
    /// The path is gone from now on, whatever the board has.
    void TakeAway(const std::string& path) { changes_.missing.insert(path); }
    void Restore(const std::string& path) {
        changes_.missing.erase(path);
        changes_.replaced.erase(path);
    }
    /// True for a path that was taken away, and for all below it.
    bool TakenAway(std::string_view path) const;

  private:
    SysfsNode LookUp(std::string_view path) const;
    SysfsNode Gpio(std::string_view rest) const;
    static SysfsNode GpioChip(std::string_view name);
    /// What the kernel gives every device, and its text for "uevent".
    static SysfsNode OfEveryDevice(std::string_view name, const std::string& uevent = "");
    SysfsNode GpioAttribute(unsigned line, std::string_view name) const;
    SysfsNode Pwm(std::string_view rest) const;
    SysfsNode PwmAttribute(unsigned channel, std::string_view name) const;
    SysfsNode Converter(std::string_view rest) const;
    SysfsNode Card(std::string_view rest) const;

    Board& board_;
    PathChanges changes_;
};

} // namespace sim
