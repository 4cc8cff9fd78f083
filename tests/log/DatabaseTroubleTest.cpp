// import: what befalls one, and what it refuses.

#include "tests/log/DayDatabase.h"
#include "tests/support/Text.h"

#include <gmock/gmock.h>

namespace tavrelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(DatabaseOf, AFileThatIsShorterIsRefusedAndItsRowsStay) {
    Day(kDark + kFirst);
    Import();
    const std::string rows = Rows(database_);
    Day(kDark);
    const CommandResult run = Import();
    EXPECT_EQ(run.output, "0 imported, 0 imported anew, 0 as they were, 1 refused\n");
    EXPECT_EQ(run.error, "tavrelin-log: " + DayFile() +
                             ": is shorter than the file of this name in " + database_ +
                             " or begins otherwise; nothing is changed\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Rows(database_), rows);
}

TEST_F(DatabaseOf, AnotherInstrumentsFileOfTheSameNameIsRefusedAndTheRowsStay) {
    Day(kDark + kFirst);
    Import();
    const std::string rows = Rows(database_);
    Day(kFirst + kDark + kDark);
    const CommandResult run = Import();
    EXPECT_EQ(run.error, "tavrelin-log: " + DayFile() +
                             ": is shorter than the file of this name in " + database_ +
                             " or begins otherwise; nothing is changed\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Rows(database_), rows);
}

TEST_F(DatabaseOf, AnImportThatIsKilledAtAnyMomentHoldsWholeFiles) {
    std::string much;
    for (int i = 0; i < 10'000; ++i) {
        much += kDark;
    }
    for (const char* day : {"07", "08", "09", "10"}) {
        Day(kFirst + much, day);
    }
    const std::string whole = RowsOfOneImport();
    bool killed = false;
    for (int milliseconds = 2; milliseconds < 100; milliseconds += 7) {
        const CommandResult run = RunCommand(
            {"sh", "-c",
             InBuild("bin/tavrelin-log") + " import " + database_ + " " + card_.Path() +
                 " & sleep " + std::to_string(milliseconds * 0.001) + "; kill -9 $!; wait $!"});
        killed = killed || run.status == 128 + 9;
        if (std::filesystem::exists(database_)) {
            EXPECT_EQ(Sql("PRAGMA integrity_check"), "ok\n") << milliseconds;
            EXPECT_THAT(Sql("SELECT count(*) FROM sqlite_schema"), testing::Not("1\n"));
            for (const std::string& count :
                 LinesOf(Sql("SELECT (SELECT count(*) FROM sample WHERE file = id) + (SELECT "
                             "count(*) FROM result WHERE file = id) FROM file"))) {
                if (count.find("no such table") == std::string::npos) {
                    EXPECT_EQ(count, "10001") << milliseconds;
                }
            }
        }
    }
    EXPECT_TRUE(killed);
    EXPECT_EQ(Import().status, 0);
    EXPECT_EQ(Rows(database_), whole);
}

TEST_F(DatabaseOf, TwoImportsAtOnceHoldsTheFilesOfBoth) {
    for (const char* day : {"07", "08", "09", "10", "11"}) {
        Day(kDark + kFirst + kSecond, day);
    }
    const std::string import = InBuild("bin/tavrelin-log") + " import " + database_ + " ";
    const CommandResult run =
        RunCommand({"sh", "-c",
                    import + card_.Path() + " & first=$!; " + import + card_.Path() +
                        "; second=$?; wait $first; exit $(($? + second))"});
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(Rows(database_), RowsOfOneImport());
}

TEST_F(DatabaseOf, OneThatStaysBusySaysSoInOneLine) {
    Day(kDark);
    Import();
    const CommandResult run =
        RunCommand({"sh", "-c",
                    "(echo 'BEGIN IMMEDIATE;'; sleep 12) | sqlite3 " + database_ +
                        " & sleep 0.4; " + InBuild("bin/tavrelin-log") + " import " + database_ +
                        " " + card_.Path() + "; status=$?; kill $!; exit $status"});
    EXPECT_EQ(run.error, "tavrelin-log: " + database_ + ": database is locked\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(DatabaseOf, AFileCutWhileItIsReadHoldsWhatItHeldBefore) {
    Day(kDark);
    Import();
    const std::string rows = Rows(database_);
    Day(kDark + kFirst);
    const CommandResult run = ImportWhile("truncate -s 80 " + DayFile());
    EXPECT_EQ(run.error,
              "tavrelin-log: " + DayFile() + ": changed while it was read; import it again\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Rows(database_), rows);
}

TEST_F(DatabaseOf, AFileThatVanishesWhileItIsReadHoldsNothingOfIt) {
    Day(kDark);
    Import();
    const std::string rows = Rows(database_);
    Day(kFirst, "08");
    const CommandResult run = ImportWhile("rm " + DayFile("08"));
    EXPECT_THAT(run.error, HasSubstr(DayFile("08") + ": No such file or directory\n"));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Rows(database_), rows);
}

TEST_F(DatabaseOf, AFileThatGrowsWhileItIsReadHoldsItsBeginAndTheRestNextTime) {
    Day(kDark);
    Import();
    Day(kDark + kFirst);
    WriteText(files_.Path("more"), kSecond);
    const CommandResult run = ImportWhile("cat " + files_.Path("more") + " >> " + DayFile());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(Sql("SELECT count(*) FROM result"), "1\n");
    EXPECT_EQ(Import().output, "0 imported, 1 imported anew, 0 as they were, 0 refused\n");
    EXPECT_EQ(Rows(database_), RowsOfOneImport());
}

TEST_F(DatabaseOf, MoreThanTheDiskTakesKeepsTheFilesBefore) {
    Day(kDark);
    Import();
    const std::string rows = Rows(database_);
    std::string much;
    for (int i = 0; i < 10'000; ++i) {
        much += kDark;
    }
    Day(much, "08");
    const std::string import =
        "ulimit -f 300; exec " + InBuild("bin/tavrelin-log") + " import " + database_ + " ";
    const CommandResult run = RunCommand({"sh", "-c", import + card_.Path()});
    EXPECT_EQ(run.error, "tavrelin-log: " + database_ + ": disk I/O error\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Rows(database_), rows);
}

TEST_F(DatabaseOf, NothingThatTheDiskTakesIsNotLeftBehind) {
    Day(kDark);
    const CommandResult run = RunCommand({"sh", "-c",
                                          "ulimit -f 4; exec " + InBuild("bin/tavrelin-log") +
                                              " import " + database_ + " " + card_.Path()});
    EXPECT_EQ(LinesOf(run.error).size(), 1U) << run.error;
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(FilesIn(files_.Path()), testing::IsEmpty());
}

struct Refusal {
    std::string sql; ///< what makes the database
    std::string why;
};

TEST_F(DatabaseOf, SomethingElseIsRefusedAndNotTouched) {
    Day(kDark);
    const Refusal refusals[]{
        {"CREATE TABLE mail(id)", "is a database, but none that tavrelin-log import made"},
        {"PRAGMA application_id = 7; CREATE TABLE mail(id)",
         "is a database, but none that tavrelin-log import made"},
        {"PRAGMA application_id = 1416392551; PRAGMA user_version = 2; CREATE TABLE file(id)",
         "its tables have version 2, this tavrelin-log knows version 1"}};
    for (const Refusal& refusal : refusals) {
        std::filesystem::remove(database_);
        Sql(refusal.sql);
        const std::string bytes = TextOf(database_);
        for (const CommandResult& run : {Import(), RunLog({"results", database_})}) {
            EXPECT_EQ(run.error, "tavrelin-log: " + database_ + ": " + refusal.why + "\n");
            EXPECT_EQ(run.status, 1);
        }
        EXPECT_EQ(TextOf(database_), bytes);
    }
}

TEST_F(DatabaseOf, AFileThatIsNoDatabaseIsRefusedAndNotTouched) {
    Day(kDark);
    const std::string notes = files_.Path("notes.txt");
    WriteText(notes, kFirst + kFirst + kDark);
    const CommandResult run = RunLog({"import", notes, DayFile()});
    EXPECT_EQ(run.error, "tavrelin-log: " + notes + ": file is not a database\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(TextOf(notes), kFirst + kFirst + kDark);
}

TEST_F(DatabaseOf, ADaysFileInPlaceOfTheDatabaseIsWrongUse) {
    Day(kDark);
    Day("", "08");
    const CommandResult run = RunLog({"import", DayFile("08"), DayFile()});
    EXPECT_EQ(run.error, "tavrelin-log: " + DayFile("08") +
                             ": named as a day's file; import takes the database first\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(TextOf(DayFile("08")), "");
}

TEST_F(DatabaseOf, NoFileAtAllIsNotMade) {
    const CommandResult run = RunLog({"import", database_, files_.Path("missing")});
    EXPECT_EQ(run.error,
              "tavrelin-log: " + files_.Path("missing") + ": No such file or directory\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_FALSE(std::filesystem::exists(database_));
}

TEST_F(DatabaseOf, APlaceThatCannotBeWrittenIsNamed) {
    Day(kDark);
    const CommandResult run = RunLog({"import", files_.Path("missing/archive.db"), card_.Path()});
    EXPECT_EQ(run.error, "tavrelin-log: " + files_.Path("missing/archive.db") +
                             ": unable to open database file\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(DatabaseOf, ADatabaseTakesDaysFilesOnly) {
    Day(kDark);
    Import();
    const CommandResult run = Import({database_, "/dev/null"});
    EXPECT_THAT(LinesOf(run.error), ElementsAre("tavrelin-log: " + database_ +
                                                    ": is a database; import takes days' files",
                                                "tavrelin-log: /dev/null: is no file"));
    EXPECT_EQ(run.output, "0 imported, 0 imported anew, 0 as they were, 2 refused\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(DatabaseOf, ADamagedFileIsNamed) {
    std::string much;
    for (int i = 0; i < 3000; ++i) {
        much += kDark;
    }
    Day(much);
    Import();
    const std::string bytes = TextOf(database_);
    WriteText(database_, bytes.substr(0, bytes.size() / 2));
    const CommandResult run = RunLog({"samples", database_});
    EXPECT_EQ(run.error, "tavrelin-log: " + database_ + ": database disk image is malformed\n");
    EXPECT_EQ(run.status, 1);
}

} // namespace
} // namespace tavrelin
