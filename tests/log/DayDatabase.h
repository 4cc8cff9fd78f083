#pragma once

#include "tests/log/LogProgram.h"
#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace tavrelin {

inline const std::string kDark = "2026-03-07 09:0:16,   20000,Dark Count (lid, closed),,\n";
inline const std::string kFirst = "2026-03-07 09:00.17,,,0.1,171.482,20000,3e+06,2.3871e+06\n";
inline const std::string kSecond = "2026-03-07 09:00.34,,,-0,-0,nan,inf,-inf\n";
inline const std::string kTornBegin = "2026-03-07 09:0:4";
inline const std::string kTornEnd = "7, 2387098,Color Development (debubbling),,\n";
inline const std::string kNoise = "\x01no \xFF"
                                  "record\n";
inline const std::string kCut = "2026-03-07 09:1:0, 2" + kFirst + "387098,Priming,,\n";
inline const std::string kCounts = " imported, 0 imported anew, 0 as they were, 0 refused\n";

class DatabaseOf : public testing::Test {
  protected:
    CommandResult Import(std::vector<std::string> paths = {}) {
        if (paths.empty()) {
            paths = {card_.Path()};
        }
        paths.insert(paths.begin(), {"import", database_});
        return RunLog(paths);
    }
    static std::string Sql(const std::string& database, const std::string& sql) {
        const CommandResult run = RunCommand({"sqlite3", database, sql});
        return run.output + run.error;
    }
    std::string Sql(const std::string& sql) { return Sql(database_, sql); }
    static std::string Rows(const std::string& database) {
        return Sql(
            database,
            "SELECT id, name, bytes, lines, begin FROM file; SELECT file, line, time, reading, "
            "description, recovered FROM sample JOIN step ON id = step; SELECT * FROM "
            "result; SELECT * FROM oddity; PRAGMA integrity_check");
    }
    /// What import makes of the card's files as they are now, in a database of its own.
    std::string RowsOfOneImport() {
        const std::string fresh = files_.Path("fresh.db");
        std::filesystem::remove(fresh);
        RunLog({"import", fresh, card_.Path()});
        return Rows(fresh);
    }
    void Day(const std::string& text, const std::string& day = "07") {
        WriteText(DayFile(day), text);
    }
    std::string DayFile(const std::string& day = "07") {
        return card_.Path("2026-03-" + day + "_logfile.csv");
    }
    /// Imports; `meanwhile` runs after the file was looked at and before it is read.
    CommandResult ImportWhile(const std::string& meanwhile) {
        const std::string program = InBuild("bin/tavrelin-log");
        return RunCommand({"sh", "-c",
                           "(echo 'BEGIN IMMEDIATE;'; sleep 1; " + meanwhile +
                               "; echo 'COMMIT;') | sqlite3 " + database_ + " & sleep 0.4; " +
                               program + " import " + database_ + " " + card_.Path() +
                               "; status=$?; wait; exit $status"});
    }

    TestFolder card_;
    TestFolder files_;
    const std::string database_ = files_.Path("archive.db");
};

} // namespace tavrelin
