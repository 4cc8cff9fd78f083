#include "log/Database.h"

#include "log/Complaint.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace tavrelin::daylog {

namespace {

// Figures have no type: as REAL a -0 would lose its sign. Another import may be making them, too.
constexpr const char* kTables = R"(
BEGIN IMMEDIATE;
CREATE TABLE IF NOT EXISTS file(
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE,
    bytes INTEGER NOT NULL,
    modified INTEGER NOT NULL,
    lines INTEGER NOT NULL,
    begin TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS step(
    id INTEGER PRIMARY KEY,
    description TEXT NOT NULL UNIQUE);
CREATE TABLE IF NOT EXISTS result(
    file INTEGER NOT NULL REFERENCES file,
    line INTEGER NOT NULL,
    time TEXT NOT NULL,
    absorbance, chlorine, dark, reference, sample,
    recovered INTEGER NOT NULL,
    PRIMARY KEY(file, line)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS sample(
    file INTEGER NOT NULL REFERENCES file,
    line INTEGER NOT NULL,
    time TEXT NOT NULL,
    reading INTEGER NOT NULL,
    step INTEGER NOT NULL REFERENCES step,
    recovered INTEGER NOT NULL,
    PRIMARY KEY(file, line)) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS oddity(
    file INTEGER NOT NULL REFERENCES file,
    line INTEGER NOT NULL,
    kind TEXT NOT NULL CHECK(kind IN ('torn', 'unknown')),
    text TEXT NOT NULL,
    PRIMARY KEY(file, line)) WITHOUT ROWID;
PRAGMA application_id = 0x546C6F67;
PRAGMA user_version = 1;
COMMIT;
)";

// A file's rows as its lines were; what a line is comes before the record put together from it.
constexpr const char* kEntries = R"(
SELECT line, kind, NULL AS time, 0 AS recovered, text, NULL, NULL, NULL, NULL
    FROM oddity WHERE file = ?1
UNION ALL SELECT line, 'result', time, recovered, absorbance, chlorine, dark, reference, sample
    FROM result WHERE file = ?1
UNION ALL SELECT line, 'sample', time, recovered, reading, description, NULL, NULL, NULL
    FROM sample JOIN step ON id = step WHERE file = ?1
ORDER BY line, recovered)";

Entry EntryOf(const Statement& row) {
    Entry entry;
    entry.line = static_cast<std::uint64_t>(row.Integer(0));
    entry.time = ParseIsoTime(row.Text(2)).value_or(0);
    entry.recovered = row.Integer(3) != 0;
    const std::string_view kind = row.Text(1);
    if (kind == "result") {
        entry.kind = Entry::Kind::Result;
        entry.figures = {row.Real(4), row.Real(5), row.Real(6), row.Real(7), row.Real(8)};
    } else if (kind == "sample") {
        entry.kind = Entry::Kind::Sample;
        entry.reading = row.Integer(4);
        entry.step = row.Text(5);
    } else {
        entry.kind = kind == "torn" ? Entry::Kind::Torn : Entry::Kind::Unknown;
        entry.text = row.Text(4);
    }
    return entry;
}

bool IsOurs(Connection& connection) {
    constexpr std::int64_t applicationId = 0x546C6F67;
    constexpr std::int64_t known = 1;
    const std::int64_t id = connection.Integer("PRAGMA application_id");
    const std::int64_t version = connection.Integer("PRAGMA user_version");
    if (!connection.IsGood()) {
        return false;
    }
    if (id != applicationId) {
        Complain(connection.Path() + ": is a database, but none that tavrelin-log import made");
    } else if (version != known) {
        Complain(connection.Path() + ": its tables have version " + std::to_string(version) +
                 ", this tavrelin-log knows version " + std::to_string(known));
    }
    return id == applicationId && version == known;
}

} // namespace

std::string BeginOf(const std::string& path, std::size_t most) {
    std::string begin(most, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(begin.data(), static_cast<std::streamsize>(most));
    begin.resize(static_cast<std::size_t>(file.gcount()));
    return begin;
}

bool IsDatabase(const std::string& path) {
    constexpr std::string_view header("SQLite format 3\0", 16);
    std::error_code ignored; // of a pipe nothing may be taken away
    return std::filesystem::is_regular_file(path, ignored) &&
           BeginOf(path, header.size()) == header;
}

bool PrepareDatabase(Connection& connection) {
    if (connection.Integer("SELECT count(*) FROM sqlite_schema") == 0) {
        connection.Run(kTables);
    }
    if (!IsOurs(connection)) {
        return false;
    }
    connection.Run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
    return connection.IsGood();
}

void ReadDatabase(const Source& source, const Visit& visit, Progress& progress) {
    Connection connection(source.path, SQLITE_OPEN_READONLY);
    if (!IsOurs(connection)) {
        return;
    }
    connection.Run("BEGIN"); // all of it as it is at one moment
    Statement files(connection, "SELECT id, name, lines, (SELECT sum(lines) FROM file) FROM file "
                                "ORDER BY name");
    Statement entries(connection, kEntries);
    while (files.Next()) {
        const std::string name = source.path + ":" + std::string(files.Text(1));
        entries.With(files.Integer(0));
        while (entries.Next()) {
            visit(EntryOf(entries), name);
        }
        const auto all = static_cast<std::uint64_t>(std::max<std::int64_t>(files.Integer(3), 1));
        progress.Add(source.bytes * static_cast<std::uint64_t>(files.Integer(2)) / all);
    }
}

} // namespace tavrelin::daylog
