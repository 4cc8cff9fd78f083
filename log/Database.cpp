#include "log/Database.h"

#include "log/Complaint.h"
#include "log/LineParser.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace tavrelin::daylog {

namespace {

constexpr std::string_view kHeader("SQLite format 3\0", 16);
constexpr std::int64_t kApplicationId = 0x546C6F67;
constexpr std::int64_t kVersion = 1;

// Figures have no type: as REAL a -0 would lose its sign.
constexpr const char* kTables = R"(
CREATE TABLE file(
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE,
    bytes INTEGER NOT NULL,
    modified INTEGER NOT NULL,
    lines INTEGER NOT NULL,
    begin INTEGER NOT NULL);
CREATE TABLE step(
    id INTEGER PRIMARY KEY,
    description TEXT NOT NULL UNIQUE);
CREATE TABLE result(
    file INTEGER NOT NULL REFERENCES file,
    line INTEGER NOT NULL,
    time TEXT NOT NULL,
    absorbance, chlorine, dark, reference, sample,
    recovered INTEGER NOT NULL,
    PRIMARY KEY(file, line)) WITHOUT ROWID;
CREATE TABLE sample(
    file INTEGER NOT NULL REFERENCES file,
    line INTEGER NOT NULL,
    time TEXT NOT NULL,
    reading INTEGER NOT NULL,
    step INTEGER NOT NULL REFERENCES step,
    recovered INTEGER NOT NULL,
    PRIMARY KEY(file, line)) WITHOUT ROWID;
CREATE TABLE oddity(
    file INTEGER NOT NULL REFERENCES file,
    line INTEGER NOT NULL,
    kind TEXT NOT NULL CHECK(kind IN ('torn', 'unknown')),
    text TEXT NOT NULL,
    PRIMARY KEY(file, line)) WITHOUT ROWID;
PRAGMA application_id = 0x546C6F67;
PRAGMA user_version = 1;
)";

std::string BeginOf(const std::string& path, std::size_t most) {
    std::string begin(most, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(begin.data(), static_cast<std::streamsize>(most));
    begin.resize(static_cast<std::size_t>(file.gcount()));
    return begin;
}

/// FNV-1a of the first bytes, which tell one instrument's file from another's.
std::int64_t DigestOfBegin(const std::string& path, std::int64_t bytes) {
    constexpr std::int64_t most = 4096;
    std::uint64_t digest = 14695981039346656037U;
    for (const char c : BeginOf(path, static_cast<std::size_t>(std::min(bytes, most)))) {
        digest = (digest ^ static_cast<unsigned char>(c)) * 1099511628211U;
    }
    return static_cast<std::int64_t>(digest);
}

/// An absolute path as SQLite takes it with options behind it.
std::string UriOf(const std::string& path) {
    std::string uri = "file://";
    for (const char c : path) {
        uri += c == '%' ? "%25" : c == '?' ? "%3f" : c == '#' ? "%23" : std::string(1, c);
    }
    return uri;
}

/// Writes the entries of one file.
class EntryWriter {
  public:
    EntryWriter(sqlite3* connection, std::int64_t file)
        : file_(file), result_(connection, "INSERT INTO result VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)"),
          sample_(connection, "INSERT INTO sample VALUES(?, ?, ?, ?, ?, ?)"),
          oddity_(connection, "INSERT INTO oddity VALUES(?, ?, ?, ?)"),
          newStep_(connection, "INSERT OR IGNORE INTO step(description) VALUES(?)"),
          step_(connection, "SELECT id FROM step WHERE description = ?") {}

    /// False after a failure.
    bool Write(const Entry& entry) {
        const auto line = static_cast<std::int64_t>(entry.line);
        const std::int64_t recovered = entry.recovered ? 1 : 0;
        lines_ += 1 - recovered;
        if (entry.kind == Entry::Kind::Result) {
            const Figures& figures = entry.figures;
            return result_
                .With(file_, line, TimeText(entry.time), figures.absorbance, figures.chlorine,
                      figures.dark, figures.reference, figures.sample, recovered)
                .Run();
        }
        if (entry.kind == Entry::Kind::Sample) {
            return sample_
                .With(file_, line, TimeText(entry.time), entry.reading, StepId(entry.step),
                      recovered)
                .Run();
        }
        const std::string_view kind = entry.kind == Entry::Kind::Torn ? "torn" : "unknown";
        return oddity_.With(file_, line, kind, entry.text).Run();
    }
    [[nodiscard]] std::int64_t Lines() const { return lines_; }

  private:
    std::string_view TimeText(CivilSeconds time) {
        if (timeText_.empty() || time != time_) {
            time_ = time;
            timeText_ = IsoText(time);
        }
        return timeText_;
    }

    std::int64_t StepId(std::string_view description) {
        constexpr std::size_t most = 100;
        const auto known = steps_.find(description);
        if (known != steps_.end()) {
            return known->second;
        }
        newStep_.With(description).Run();
        step_.With(description).Next();
        const std::int64_t id = step_.Integer(0);
        step_.With(); // lets go of the row
        if (steps_.size() < most) {
            steps_.emplace(description, id);
        }
        return id;
    }

    std::int64_t file_;
    std::int64_t lines_ = 0;
    CivilSeconds time_ = 0;
    std::string timeText_;
    std::map<std::string, std::int64_t, std::less<>> steps_;
    Statement result_;
    Statement sample_;
    Statement oddity_;
    Statement newStep_;
    Statement step_;
};

// A file's rows as its lines were; what a line is comes before the record put together from it.
constexpr const char* kEntries = R"(
SELECT line, kind, NULL AS time, 0 AS recovered, text, NULL, NULL, NULL, NULL
    FROM oddity WHERE file = ?1
UNION ALL SELECT line, 'result', time, recovered, absorbance, chlorine, dark, reference, sample
    FROM result WHERE file = ?1
UNION ALL SELECT line, 'sample', time, recovered, reading, description, NULL, NULL, NULL
    FROM sample JOIN step ON id = step WHERE file = ?1
ORDER BY line, recovered)";

/// Makes entries of such rows.
class RowReader {
  public:
    Entry Read(const Statement& row) {
        Entry entry;
        entry.line = static_cast<std::uint64_t>(row.Integer(0));
        const std::string_view kind = row.Text(1);
        if (kind == "torn" || kind == "unknown") {
            entry.kind = kind == "torn" ? Entry::Kind::Torn : Entry::Kind::Unknown;
            entry.text = row.Text(4);
            return entry;
        }
        if (row.Text(2) != timeText_) {
            timeText_ = row.Text(2);
            time_ = ParseIsoTime(timeText_).value_or(0);
        }
        entry.time = time_;
        entry.recovered = row.Integer(3) != 0;
        if (kind == "result") {
            entry.kind = Entry::Kind::Result;
            entry.figures = {row.Real(4), row.Real(5), row.Real(6), row.Real(7), row.Real(8)};
        } else {
            entry.kind = Entry::Kind::Sample;
            entry.reading = row.Integer(4);
            entry.step = row.Text(5);
        }
        return entry;
    }

  private:
    std::string timeText_;
    CivilSeconds time_ = 0;
};

} // namespace

Statement::Statement(sqlite3* connection, const char* sql) : statement_(nullptr, sqlite3_finalize) {
    sqlite3_stmt* statement = nullptr;
    outcome_ = sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr);
    statement_.reset(statement);
}

bool Statement::Run() {
    while (Next()) {
    }
    sqlite3_reset(statement_.get());
    return !Failed();
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

bool Database::Is(const std::string& path) {
    std::error_code ignored; // of a pipe nothing may be taken away
    return std::filesystem::is_regular_file(path, ignored) &&
           BeginOf(path, kHeader.size()) == kHeader;
}

Database::Database(std::string path, Use use)
    : path_(std::move(path)), connection_(nullptr, sqlite3_close) {
    std::error_code ignored;
    const bool isNew = use == Use::Write && !std::filesystem::exists(path_, ignored);
    if (Open(use) && CheckKind(use)) {
        good_ = true;
    } else if (isNew && sqlite3_errcode(connection_.get()) != SQLITE_BUSY) {
        connection_.reset();
        for (const char* rest : {"", "-wal", "-shm", "-journal"}) {
            std::filesystem::remove(path_ + rest, ignored);
        }
    }
}

bool Database::Open(Use use) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::path path = fs::absolute(path_, ignored);
    if (use == Use::Read) {
        if (!Connect(UriOf(path), SQLITE_OPEN_READONLY)) {
            return false;
        }
        // Beside a database in WAL mode SQLite makes a file, unless told that nobody writes.
        const int outcome = sqlite3_exec(connection_.get(), "SELECT 1 FROM sqlite_schema", nullptr,
                                         nullptr, nullptr);
        const bool cannot = outcome == SQLITE_CANTOPEN || outcome == SQLITE_READONLY;
        return !cannot || fs::exists(path_ + "-wal", ignored) ||
               Connect(UriOf(path) + "?immutable=1", SQLITE_OPEN_READONLY);
    }
    if (access((fs::exists(path, ignored) ? path : path.parent_path()).c_str(), W_OK) != 0) {
        ComplainOfErrno(path_);
        return false;
    }
    return Connect(UriOf(path), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
}

bool Database::Connect(const std::string& uri, int flags) {
    constexpr int patience = 10'000; // milliseconds, for another import
    sqlite3* connection = nullptr;
    const int outcome = sqlite3_open_v2(uri.c_str(), &connection, flags | SQLITE_OPEN_URI, nullptr);
    connection_.reset(connection);
    sqlite3_busy_timeout(connection, patience);
    return outcome == SQLITE_OK || Fail();
}

bool Database::CheckKind(Use use) {
    Statement kind(connection_.get(), "SELECT application_id, user_version, (SELECT count(*) FROM "
                                      "sqlite_schema) FROM pragma_application_id, "
                                      "pragma_user_version");
    if (!kind.Next()) {
        return Fail();
    }
    const std::int64_t id = kind.Integer(0);
    const std::int64_t version = kind.Integer(1);
    const bool isEmpty = id == 0 && version == 0 && kind.Integer(2) == 0;
    kind.With();
    if (use == Use::Write && isEmpty) {
        return MakeTables();
    }
    if (id != kApplicationId) {
        Complain(path_ + ": is a database, but none that tavrelin-log import made");
    } else if (version != kVersion) {
        Complain(path_ + ": its tables have version " + std::to_string(version) +
                 ", this tavrelin-log knows version " + std::to_string(kVersion));
    }
    return id == kApplicationId && version == kVersion &&
           (use == Use::Read || Run("PRAGMA synchronous = NORMAL"));
}

/// Another import may be doing the same.
bool Database::MakeTables() {
    constexpr int tries = 100;
    Statement mode(connection_.get(), "PRAGMA journal_mode = WAL");
    for (int i = 1; !mode.With().Run() && i < tries; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (mode.Failed()) {
        return Fail();
    }
    if (!Run("PRAGMA synchronous = NORMAL") || !Run("BEGIN IMMEDIATE")) {
        return false;
    }
    Statement made(connection_.get(), "SELECT count(*) FROM sqlite_schema");
    const bool isMade = made.Next() && made.Integer(0) > 0;
    made.With();
    return isMade ? Run("COMMIT") && CheckKind(Use::Write) : Run(kTables) && Run("COMMIT");
}

bool Database::Run(const char* sql) {
    return sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK || Fail();
}

/// Tells what went wrong last.
bool Database::Fail() {
    good_ = false;
    std::string why = sqlite3_errmsg(connection_.get());
    if (sqlite3_errcode(connection_.get()) == SQLITE_BUSY) {
        why = "busy: another import is at work on it";
    }
    Complain(path_ + ": " + why);
    return false;
}

bool Database::StateOf(const std::string& path, FileState& state) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        ComplainOfErrno(path);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        Complain(path + ": is no file");
        return false;
    }
    state = {status.st_size, status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec,
             status.st_ino};
    return true;
}

Database::Import Database::Take(const Source& source, Progress& progress) {
    FileState state;
    if (!StateOf(source.path, state)) {
        return Import::Refused;
    }
    if (Is(source.path)) {
        Complain(source.path + ": is a database; import takes days' files");
        return Import::Refused;
    }
    if (!Run("BEGIN IMMEDIATE")) {
        return Import::Refused;
    }
    const Import import = TakeInside(source.path, state, progress);
    if ((import == Import::New || import == Import::Anew) && Run("COMMIT")) {
        return import;
    }
    sqlite3_exec(connection_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    return good_ ? import : Import::Refused;
}

Database::Import Database::TakeInside(const std::string& path, const FileState& state,
                                      Progress& progress) {
    sqlite3* const connection = connection_.get();
    const std::string name = FileName(path);
    Statement known(connection, "SELECT id, bytes, modified, begin FROM file WHERE name = ?");
    const bool isKnown = known.With(std::string_view(name)).Next();
    if (known.Failed()) {
        Fail();
        return Import::Refused;
    }
    std::int64_t file = known.Integer(0);
    if (isKnown) {
        const std::int64_t bytes = known.Integer(1);
        if (bytes == state.bytes && known.Integer(2) == state.modified) {
            progress.Add(static_cast<std::uint64_t>(bytes));
            return Import::Unchanged;
        }
        if (state.bytes < bytes || known.Integer(3) != DigestOfBegin(path, bytes)) {
            Complain(path + ": " +
                     (state.bytes < bytes ? "is shorter than" : "begins otherwise than") +
                     " the file of this name in " + path_ + ", which stays as it is");
            return Import::Refused;
        }
        for (const char* sql :
             {"DELETE FROM result WHERE file = ?", "DELETE FROM sample WHERE file = ?",
              "DELETE FROM oddity WHERE file = ?"}) {
            if (!Statement(connection, sql).With(file).Run()) {
                Fail();
                return Import::Refused;
            }
        }
    } else {
        Statement add(connection, "INSERT INTO file VALUES(NULL, ?, 0, 0, 0, 0)");
        if (!add.With(std::string_view(name)).Run()) {
            Fail();
            return Import::Refused;
        }
        file = sqlite3_last_insert_rowid(connection);
    }
    known.With();
    if (!TakeEntries(path, file, state, progress)) {
        return Import::Refused;
    }
    return isKnown ? Import::Anew : Import::New;
}

bool Database::TakeEntries(const std::string& path, std::int64_t file, const FileState& state,
                           Progress& progress) {
    EntryWriter writer(connection_.get(), file);
    bool written = true;
    LineParser parser([&](const Entry& entry) { written = written && writer.Write(entry); });
    std::int64_t left = state.bytes; // what was added since is for the next import
    const bool isRead = ReadFile(path, [&](std::string_view bytes) {
        bytes = bytes.substr(0, static_cast<std::size_t>(left));
        left -= static_cast<std::int64_t>(bytes.size());
        if (written) {
            parser.Feed(bytes);
        }
        progress.Add(bytes.size());
    });
    parser.Finish();
    if (!written) {
        return Fail();
    }
    Statement update(connection_.get(),
                     "UPDATE file SET bytes = ?, modified = ?, lines = ?, begin = ? WHERE id = ?");
    if (!update
             .With(state.bytes, state.modified, writer.Lines(), DigestOfBegin(path, state.bytes),
                   file)
             .Run()) {
        return Fail();
    }
    FileState after;
    if (!isRead || !StateOf(path, after)) {
        return false;
    }
    const bool hasGrown = after.inode == state.inode && after.bytes > state.bytes;
    if (left > 0 || (after != state && !hasGrown)) {
        Complain(path + ": changed while it was read; import it again");
        return false;
    }
    return true;
}

void Database::ReadAll(std::uint64_t bytes, const Visit& visit, Progress& progress) {
    constexpr std::uint64_t often = 1024;
    if (!good_ || !Run("BEGIN")) {
        return;
    }
    Statement files(connection_.get(),
                    "SELECT id, name, (SELECT sum(lines) FROM file) FROM file ORDER BY name");
    Statement entries(connection_.get(), kEntries);
    RowReader reader;
    std::uint64_t rows = 0;
    while (!entries.Failed() && files.Next()) {
        const std::string name = path_ + ":" + std::string(files.Text(1));
        const auto lines = static_cast<std::uint64_t>(std::max<std::int64_t>(files.Integer(2), 1));
        entries.With(files.Integer(0));
        while (entries.Next()) {
            visit(reader.Read(entries), name);
            if (++rows % often == 0) {
                progress.Add(bytes * often / lines);
            }
        }
    }
    if (entries.Failed() || files.Failed()) {
        Fail();
    }
}

} // namespace tavrelin::daylog
