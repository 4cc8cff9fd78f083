// import: what the database holds after any number of imports, and that all else reads it as it
// reads the files.

#include "tests/log/DayDatabase.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>

namespace tavrelin {
namespace {

using testing::HasSubstr;

TEST_F(DatabaseOf, ADayHasItsRecordsInTheTablesThatAreDocumented) {
    Day(kDark + kFirst + kSecond + kNoise + kTornBegin);
    const CommandResult run = Import();
    EXPECT_EQ(run.output, "1" + kCounts);
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(Sql("SELECT name, bytes, lines FROM file"),
              "2026-03-07_logfile.csv|" + std::to_string(TextOf(DayFile()).size()) + "|5\n");
    EXPECT_EQ(Sql("SELECT sample.line, time, reading, description, recovered FROM sample JOIN step "
                  "ON step.id = sample.step"),
              "1|2026-03-07T09:00:16|20000|Dark Count (lid, closed)|0\n");
    EXPECT_EQ(Sql("SELECT line, time, absorbance, chlorine, dark, reference, sample, recovered "
                  "FROM result"),
              "2|2026-03-07T09:00:17|0.1|171.482|20000.0|3000000.0|2387100.0|0\n"
              "3|2026-03-07T09:00:34|0.0|0.0||Inf|-Inf|0\n");
    // The shell shows no sign of a zero; that it is kept shows where results are listed.
    EXPECT_EQ(Sql("SELECT line, kind, text FROM oddity"),
              "4|unknown|" + kNoise + "5|torn|" + kTornBegin + "\n");
    EXPECT_EQ(Sql("PRAGMA journal_mode; PRAGMA user_version; PRAGMA application_id"),
              "wal\n1\n1416392551\n");
}

TEST_F(DatabaseOf, ADayHasItsTableDefinitionsInTheDocuments) {
    Day(kFirst);
    Import();
    const std::string documents = TextOf(InCheckout("docs/day-files.md"));
    const std::string schema = Sql("SELECT sql || ';' FROM sqlite_schema WHERE sql IS NOT NULL");
    for (const std::string& line : LinesOf(schema)) {
        EXPECT_THAT(documents, HasSubstr(line));
    }
}

TEST_F(DatabaseOf, TheSameFilesTwiceIsTheSame) {
    Day(kDark + kFirst);
    Day(kDark, "08");
    Import();
    const std::string rows = Rows(database_);
    EXPECT_EQ(Import().output, "0 imported, 0 imported anew, 2 as they were, 0 refused\n");
    EXPECT_EQ(Rows(database_), rows);
}

TEST_F(DatabaseOf, AFileThatHasGrownIsThatOfOneImport) {
    Day(kDark);
    Day(kDark, "08");
    Import();
    Day(kDark + kFirst + kCut);
    EXPECT_EQ(Import().output, "0 imported, 1 imported anew, 1 as they were, 0 refused\n");
    EXPECT_EQ(Rows(database_), RowsOfOneImport());
}

TEST_F(DatabaseOf, ATornLastLineCompletedLaterIsThatOfOneImport) {
    Day(kDark + kTornBegin);
    Import();
    EXPECT_EQ(Sql("SELECT text FROM oddity"), kTornBegin + "\n");
    Day(kDark + kTornBegin + kTornEnd);
    EXPECT_EQ(Import().status, 0);
    EXPECT_EQ(Sql("SELECT count(*) FROM oddity"), "0\n");
    EXPECT_EQ(Rows(database_), RowsOfOneImport());
}

TEST_F(DatabaseOf, FilesIsReadAsTheFilesAre) {
    Day(kDark + kFirst + kSecond + kCut + kNoise + kTornBegin);
    Day("", "08");
    Day(kDark + kNoise + kCut, "09");
    Import();
    for (const std::string command : {"results", "samples", "summary"}) {
        const CommandResult files = RunLog({command, card_.Path()});
        CommandResult database = RunLog({command, database_});
        for (std::size_t at = 0;
             (at = database.output.find(database_ + ":")) != std::string::npos;) {
            database.output.replace(at, database_.size() + 1, card_.Path() + "/");
        }
        EXPECT_EQ(database.output, files.output) << command;
        EXPECT_EQ(database.error, files.error) << command;
        EXPECT_EQ(database.status, files.status) << command;
    }
}

TEST_F(DatabaseOf, FilesCanBeReadWhileAnImportIsAtWork) {
    Day(kDark + kFirst);
    Import();
    const CommandResult run = RunCommand(
        {"sh", "-c",
         "(echo 'BEGIN IMMEDIATE; DELETE FROM result;'; sleep 1) | sqlite3 " + database_ +
             " & sleep 0.4; " + InBuild("bin/tavrelin-log") + " results " + database_ + "; wait"});
    EXPECT_THAT(run.output, HasSubstr("2026-03-07T09:00:17,0.1,171.482"));
}

} // namespace
} // namespace tavrelin
