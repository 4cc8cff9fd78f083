#pragma once

#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

namespace tavrelin::daylog {

/// A connection to an SQLite database. The first failure is told by Complain; after it nothing is
/// done any more, and what was not committed is lost when the connection ends.
class Connection {
  public:
    /// With SQLite's flags for opening it.
    Connection(std::string path, int flags);

    [[nodiscard]] bool IsGood() const { return good_; }
    [[nodiscard]] const std::string& Path() const { return path_; }

    void Run(const char* sql);
    /// The first figure of the first row; 0 after a failure.
    std::int64_t Integer(const char* sql);

  private:
    friend class Statement;
    bool Check(int outcome);

    std::string path_;
    bool good_ = true;
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection_;
};

/// A statement of SQL, to be run any number of times.
class Statement {
  public:
    Statement(Connection& connection, const char* sql);

    /// Begins anew with these values for its question marks; a number that is none is NULL.
    template <typename... Values>
    Statement& With(const Values&... values) {
        sqlite3_reset(statement_.get());
        int place = 0;
        (Bind(++place, values), ...);
        return *this;
    }
    /// True while there is a row.
    bool Next();
    /// Runs to its end.
    void Run();

    [[nodiscard]] std::int64_t Integer(int column) const;
    [[nodiscard]] double Real(int column) const; ///< NaN for NULL
    /// Lives until the next row.
    [[nodiscard]] std::string_view Text(int column) const;

  private:
    void Bind(int place, std::int64_t value);
    void Bind(int place, double value);
    void Bind(int place, std::string_view value);

    Connection& connection_;
    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement_;
};

} // namespace tavrelin::daylog
