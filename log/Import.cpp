#include "log/Complaint.h"
#include "log/Database.h"
#include "log/EntryWriter.h"
#include "log/LineParser.h"
#include "log/Options.h"
#include "log/Table.h"

#include <array>
#include <filesystem>
#include <iostream>
#include <sys/stat.h>

namespace tavrelin::daylog {

namespace {

/// A day's file as it is before it is read, and the row that it has from an import before.
struct DayFile {
    std::string path;
    std::string name;
    std::int64_t bytes = 0;
    std::int64_t modified = 0; ///< nanoseconds since 1970, UTC
    std::int64_t id = 0;
};

enum class Outcome { New, Anew, Unchanged, Refused };

/// False, told by Complain, for what is no day's file.
bool LookAt(const std::string& path, DayFile& file) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        ComplainOfErrno(path);
        return false;
    }
    const bool isDatabase = IsDatabase(path);
    if (isDatabase || !S_ISREG(status.st_mode)) {
        Complain(path +
                 (isDatabase ? ": is a database; import takes days' files" : ": is no file"));
        return false;
    }
    file = {path, FileName(path), status.st_size,
            status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec};
    return true;
}

/// Takes the file's entries and its row; what was added to it since is for the next import.
bool Write(Connection& connection, const DayFile& file, Progress& progress) {
    constexpr std::int64_t tellsFilesApart = 4096;
    EntryWriter writer(connection, file.id);
    LineParser parser([&](const Entry& entry) { writer.Write(entry); });
    auto left = static_cast<std::uint64_t>(file.bytes);
    const bool isRead = ReadFile(file.path, [&](std::string_view bytes) {
        bytes =
            bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(left, bytes.size())));
        left -= bytes.size();
        parser.Feed(bytes);
        progress.Add(bytes.size());
    });
    parser.Finish();
    if (isRead && left > 0) {
        Complain(file.path + ": changed while it was read; import it again");
    }
    const std::string begin =
        BeginOf(file.path, static_cast<std::size_t>(std::min(file.bytes, tellsFilesApart)));
    Statement(connection, "INSERT OR REPLACE INTO file VALUES(?, ?, ?, ?, ?, ?)")
        .With(file.id, std::string_view(file.name), file.bytes, file.modified, writer.Lines(),
              std::string_view(begin))
        .Run();
    return isRead && left == 0;
}

Outcome Replace(Connection& connection, DayFile& file, Progress& progress) {
    Statement known(connection, "SELECT id, bytes, modified, begin FROM file WHERE name = ?");
    if (!known.With(std::string_view(file.name)).Next()) {
        file.id = connection.Integer("SELECT coalesce(max(id), 0) + 1 FROM file");
        return Write(connection, file, progress) ? Outcome::New : Outcome::Refused;
    }
    file.id = known.Integer(0);
    if (file.bytes == known.Integer(1) && file.modified == known.Integer(2)) {
        progress.Add(static_cast<std::uint64_t>(file.bytes));
        return Outcome::Unchanged;
    }
    const std::string_view begin = known.Text(3);
    if (file.bytes < known.Integer(1) || BeginOf(file.path, begin.size()) != begin) {
        Complain(file.path + ": is shorter than the file of this name in " + connection.Path() +
                 " or begins otherwise; nothing is changed");
        return Outcome::Refused;
    }
    known.With();
    for (const char* sql :
         {"DELETE FROM result WHERE file = ?", "DELETE FROM sample WHERE file = ?",
          "DELETE FROM oddity WHERE file = ?"}) {
        Statement(connection, sql).With(file.id).Run();
    }
    return Write(connection, file, progress) ? Outcome::Anew : Outcome::Refused;
}

/// Takes in a day's file, all of it or nothing.
Outcome Take(Connection& connection, const std::string& path, Progress& progress) {
    DayFile file;
    if (!LookAt(path, file)) {
        return Outcome::Refused;
    }
    connection.Run("BEGIN IMMEDIATE");
    const Outcome outcome = Replace(connection, file, progress);
    connection.Run(outcome == Outcome::Refused ? "ROLLBACK" : "COMMIT");
    return connection.IsGood() ? outcome : Outcome::Refused;
}

/// Takes them all and counts them by Outcome; false where there is no database to take them.
bool TakeAll(const Options& options, std::array<std::uint64_t, 4>& counts) {
    const auto sources = FindSources(options.paths);
    if (sources.empty()) {
        return false;
    }
    Connection connection(options.database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    if (!PrepareDatabase(connection)) {
        return false;
    }
    Progress progress(TotalBytes(sources));
    for (const Source& source : sources) {
        if (connection.IsGood()) {
            ++counts.at(static_cast<std::size_t>(Take(connection, source.path, progress)));
        }
    }
    return true;
}

} // namespace

int ImportFiles(const Options& options) {
    if (IsDayFile(FileName(options.database))) {
        Complain(options.database + ": named as a day's file; import takes the database first");
        return kWrongUsage;
    }
    std::array<std::uint64_t, 4> counts{};
    std::error_code ignored;
    const bool isNew = !std::filesystem::exists(options.database, ignored);
    if (!TakeAll(options, counts)) {
        if (isNew && std::filesystem::file_size(options.database, ignored) == 0) {
            std::filesystem::remove(options.database, ignored);
        }
        return kFound;
    }
    std::cout << counts[0] << " imported, " << counts[1] << " imported anew, " << counts[2]
              << " as they were, " << counts[3] << " refused\n";
    return FlushOutput() && !Complained() ? kDone : kFound;
}

} // namespace tavrelin::daylog
