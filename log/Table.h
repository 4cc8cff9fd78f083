#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavrelin::daylog {

/// A column of a listing.
struct Column {
    std::string_view name;
    bool text = false; ///< left-aligned, and in quotes in JSON; else a number
};

/// Writes a listing to standard output: aligned on a terminal, one JSON object a line when asked
/// for, else CSV with a header. In JSON a number that JSON has no word for is null.
class Table {
  public:
    Table(std::vector<Column> columns, bool json);

    /// One cell for each column. On a terminal columns are as wide as their headers and first rows
    /// need.
    void Add(std::vector<std::string> cells);
    /// Writes what is left. False, told by Complain, when something could not be written.
    bool Finish();

  private:
    enum class Form { Aligned, Csv, Json };

    void WriteAligned();
    void Write(const std::vector<std::string>& cells);

    std::vector<Column> columns_;
    Form form_;
    std::vector<std::size_t> widths_;
    std::vector<std::vector<std::string>> waiting_; ///< rows that tell how wide the columns are
};

/// A printable begin of a text.
std::string Shown(std::string_view text);
/// True for whole UTF-8 without control characters.
bool IsPlain(std::string_view text);
/// A text in the double quotes of JSON.
std::string JsonText(std::string_view text);
/// A number as JSON spells it: null for those that it does not have, and for none.
std::string JsonNumber(std::string_view number);
/// Hands all of standard output on; false, told by Complain, when something could not be written.
bool FlushOutput();

} // namespace tavrelin::daylog
