#include "log/Sql.h"

#include "log/Complaint.h"

#include <limits>

namespace tavrelin::daylog {

Connection::Connection(std::string path, int flags)
    : path_(std::move(path)), connection_(nullptr, sqlite3_close) {
    constexpr int patience = 10'000; // milliseconds, for another import
    sqlite3* connection = nullptr;
    const int outcome = sqlite3_open_v2(path_.c_str(), &connection, flags, nullptr);
    connection_.reset(connection);
    sqlite3_busy_timeout(connection, patience);
    Check(outcome);
}

void Connection::Run(const char* sql) {
    if (good_) {
        Check(sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr));
    }
}

std::int64_t Connection::Integer(const char* sql) {
    Statement statement(*this, sql);
    return statement.Next() ? statement.Integer(0) : 0;
}

bool Connection::Check(int outcome) {
    const bool failed = outcome != SQLITE_OK && outcome != SQLITE_ROW && outcome != SQLITE_DONE;
    if (good_ && failed) {
        good_ = false;
        Complain(path_ + ": " + sqlite3_errmsg(connection_.get()));
    }
    return good_;
}

Statement::Statement(Connection& connection, const char* sql)
    : connection_(connection), statement_(nullptr, sqlite3_finalize) {
    sqlite3_stmt* statement = nullptr;
    connection.Check(
        sqlite3_prepare_v2(connection.connection_.get(), sql, -1, &statement, nullptr));
    statement_.reset(statement);
}

bool Statement::Next() {
    if (!connection_.IsGood()) {
        return false;
    }
    const int outcome = sqlite3_step(statement_.get());
    return connection_.Check(outcome) && outcome == SQLITE_ROW;
}

void Statement::Run() {
    while (Next()) {
    }
    sqlite3_reset(statement_.get());
}

std::int64_t Statement::Integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

double Statement::Real(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL
               ? std::numeric_limits<double>::quiet_NaN()
               : sqlite3_column_double(statement_.get(), column);
}

std::string_view Statement::Text(int column) const {
    const void* text = sqlite3_column_blob(statement_.get(), column);
    return {static_cast<const char*>(text),
            static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

void Statement::Bind(int place, std::int64_t value) {
    sqlite3_bind_int64(statement_.get(), place, value);
}

void Statement::Bind(int place, double value) {
    sqlite3_bind_double(statement_.get(), place, value);
}

void Statement::Bind(int place, std::string_view value) {
    sqlite3_bind_text(statement_.get(), place, value.empty() ? "" : value.data(),
                      static_cast<int>(value.size()), SQLITE_STATIC);
}

} // namespace tavrelin::daylog
