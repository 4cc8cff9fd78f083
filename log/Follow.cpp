#include "log/Complaint.h"
#include "log/Feed.h"
#include "log/FolderWatch.h"
#include "log/Options.h"
#include "log/Outlet.h"
#include "log/Source.h"
#include "log/Table.h"
#include "log/Tail.h"

#include <filesystem>
#include <map>

namespace tavrelin::daylog {

namespace {

class Follower {
  public:
    explicit Follower(const Options& options)
        : options_(options), watch_(options.folder), outlet_(options.output, Exposes()),
          feed_(options.zoned) {}

    /// Until it is asked to end; the exit status.
    int Run();

  private:
    [[nodiscard]] bool Exposes() const { return options_.format == "prometheus"; }
    void ReadFolder();
    void ReadFile(const std::string& path, bool skip);
    void Take(const Entry& entry, const std::string& file);
    void TakeRecord(const Entry& record, const std::string& file);
    void TellBroken(const Entry& line, const std::string& file);
    void EndRound();

    const Options& options_;
    const Visit visit_ = [this](const Entry& entry, const std::string& file) { Take(entry, file); };
    FolderWatch watch_;
    Outlet outlet_;
    Feed feed_;
    ZonedClock clock_;
    Exposed exposed_;
    std::map<std::string, Tail> tails_; ///< by path
    std::optional<dev_t> device_;       ///< of the folder as it was last seen
    std::uint64_t named_ = 0;           ///< broken lines named in this round
    std::uint64_t unnamed_ = 0;
};

int Follower::Run() {
    if (!outlet_.Open() || !watch_.Begin()) {
        return kFound;
    }
    ReadFolder();
    EndRound();
    while (outlet_.Await(watch_.Notices(), watch_.Mounts())) {
        FolderWatch::News news;
        if (!watch_.Take(news)) {
            return kFound;
        }
        if (news.folder) {
            ReadFolder();
        }
        for (const std::string& name : news.files) {
            if (!news.folder && IsDayFile(name)) {
                ReadFile(std::filesystem::path(options_.folder) / name, false);
            }
        }
        EndRound();
    }
    return outlet_.ReaderGone() ? kFound : kDone;
}

/// What a folder holds at the start is old. Later, all that it did not hold before is new, but on
/// another file system, a card that was put in: there only the last day's file is.
void Follower::ReadFolder() {
    const bool start = !device_;
    const bool card = device_ && *device_ != watch_.Device();
    device_ = watch_.Device();
    std::error_code notThere;
    const std::vector<std::string> files = DayFilesIn(options_.folder, notThere);
    for (const std::string& file : files) {
        ReadFile(file, !options_.from && (start || (card && file != files.back())));
    }
}

/// `skip`: leaves out what a file holds that was not known before.
void Follower::ReadFile(const std::string& path, bool skip) {
    const auto [at, unknown] = tails_.try_emplace(path, path, visit_);
    if (unknown && skip) {
        at->second.SkipToEnd();
    } else {
        at->second.ReadOn();
    }
}

void Follower::Take(const Entry& entry, const std::string& file) {
    if (!entry.IsRecord()) {
        ++exposed_.broken;
        TellBroken(entry, file);
    } else if (options_.Selects(entry.time)) {
        TakeRecord(entry, file);
    }
}

void Follower::TakeRecord(const Entry& record, const std::string& file) {
    const bool result = record.kind == Entry::Kind::Result;
    ++(result ? exposed_.results : exposed_.samples);
    if (result && Exposes()) {
        exposed_.figures = record.figures;
        exposed_.utc = clock_.At(record.time).utc;
    } else if (!Exposes() && (result || options_.samples)) {
        const std::string line =
            options_.format == "json" ? feed_.Json(record) : feed_.Influx(record);
        if (line.empty()) {
            Complain(file + ": the record of " + IsoText(record.time) +
                     " has nothing that the line protocol could carry");
        }
        outlet_.Write(line);
    }
}

void Follower::TellBroken(const Entry& line, const std::string& file) {
    constexpr std::uint64_t most = 20;
    constexpr std::size_t shown = 100;
    if (named_ == most) {
        ++unnamed_;
        return;
    }
    ++named_;
    Complain(file + (line.kind == Entry::Kind::Torn ? ": torn: " : ": unknown: ") +
             JsonText(line.text.substr(0, shown)) + " (" + std::to_string(exposed_.broken) +
             " since the start)");
}

void Follower::EndRound() {
    if (unnamed_ > 0) {
        Complain("and " + std::to_string(unnamed_) + " more lines that are torn or unknown");
    }
    named_ = unnamed_ = 0;
    if (Exposes()) {
        outlet_.Replace(Exposition(exposed_));
    }
}

} // namespace

int Follow(const Options& options) {
    if (options.format == "prometheus" && options.output.empty()) {
        Complain("--format prometheus needs --output FILE; see tavrelin-log follow --help");
        return kWrongUsage;
    }
    std::error_code unknown;
    const auto status = std::filesystem::status(options.folder, unknown);
    if (std::filesystem::exists(status) && !std::filesystem::is_directory(status)) {
        Complain(options.folder + ": not a folder");
        return kFound;
    }
    return Follower(options).Run();
}

} // namespace tavrelin::daylog
