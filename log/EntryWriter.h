#pragma once

#include "log/Entry.h"
#include "log/Sql.h"

#include <map>

namespace tavrelin::daylog {

/// Writes the entries of one file into the tables.
class EntryWriter {
  public:
    EntryWriter(Connection& connection, std::int64_t file);

    void Write(const Entry& entry);
    /// Lines read so far.
    [[nodiscard]] std::int64_t Lines() const { return lines_; }

  private:
    std::int64_t StepId(std::string_view description);

    std::int64_t file_;
    std::int64_t lines_ = 0;
    std::map<std::string, std::int64_t, std::less<>> steps_;
    Statement result_;
    Statement sample_;
    Statement oddity_;
    Statement step_;
};

} // namespace tavrelin::daylog
