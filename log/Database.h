#pragma once

#include "log/Entry.h"
#include "log/Progress.h"
#include "log/Source.h"

#include <map>
#include <memory>
#include <sqlite3.h>
#include <string>

namespace tavrelin::daylog {

/// A statement of SQL, to be run any number of times. After a failure its connection knows why.
class Statement {
  public:
    Statement(sqlite3* connection, const char* sql);

    /// Begins anew with these values for its question marks; a number that is none is NULL.
    template <typename... Values>
    Statement& With(const Values&... values) {
        sqlite3_reset(statement_.get());
        int place = 0;
        (Bind(++place, values), ...);
        return *this;
    }
    /// True while there is a row.
    bool Next() { return (outcome_ = sqlite3_step(statement_.get())) == SQLITE_ROW; }
    /// Runs to its end; false after a failure.
    bool Run();
    [[nodiscard]] bool Failed() const {
        return outcome_ != SQLITE_OK && outcome_ != SQLITE_ROW && outcome_ != SQLITE_DONE;
    }

    [[nodiscard]] std::int64_t Integer(int column) const;
    [[nodiscard]] double Real(int column) const; ///< NaN for NULL
    /// Lives until the next row.
    [[nodiscard]] std::string_view Text(int column) const;

  private:
    void Bind(int place, std::int64_t value);
    void Bind(int place, double value);
    void Bind(int place, std::string_view value);

    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement_;
    int outcome_ = SQLITE_DONE;
};

/// Days' files in SQLite; docs/day-files.md has the tables. Every failure is told by Complain.
class Database {
  public:
    enum class Use { Read, Write };
    enum class Import { New, Anew, Unchanged, Refused };

    /// True when a file begins as one of SQLite's does.
    static bool Is(const std::string& path);

    /// To write, it is made where there is none.
    Database(std::string path, Use use);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database() = default;

    /// False once it could not be opened, read or written.
    [[nodiscard]] bool IsGood() const { return good_; }

    /// Takes in a day's file, all of it or nothing.
    Import Take(const Source& source, Progress& progress);

    /// Visits all entries as the files themselves would give them, in the order of the files'
    /// names.
    void ReadAll(std::uint64_t bytes, const Visit& visit, Progress& progress);

  private:
    struct FileState {
        std::int64_t bytes = 0;
        std::int64_t modified = 0; ///< nanoseconds since 1970, UTC
        std::uint64_t inode = 0;
        bool operator==(const FileState&) const = default;
    };

    static bool StateOf(const std::string& path, FileState& state);
    bool Open(Use use);
    bool Connect(const std::string& uri, int flags);
    bool CheckKind(Use use);
    bool MakeTables();
    bool Run(const char* sql);
    bool Fail();
    Import TakeInside(const std::string& path, const FileState& state, Progress& progress);
    bool TakeEntries(const std::string& path, std::int64_t file, const FileState& state,
                     Progress& progress);

    std::string path_;
    bool good_ = false;
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection_;
};

} // namespace tavrelin::daylog
