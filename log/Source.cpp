#include "log/Source.h"

#include "log/Complaint.h"
#include "log/Database.h"
#include "log/LineParser.h"
#include "log/Progress.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sys/stat.h>

namespace tavrelin::daylog {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kLogSuffix = "_logfile.csv";

void AddFile(const std::string& path, std::vector<Source>& sources) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        ComplainOfErrno(path);
        return;
    }
    sources.push_back({path, static_cast<std::uint64_t>(status.st_size)});
}

void AddFolder(const std::string& path, std::vector<Source>& sources) {
    std::error_code error;
    const std::vector<std::string> files = DayFilesIn(path, error);
    if (error) {
        Complain(path + ": " + error.message());
    } else if (files.empty()) {
        Complain(path + ": no file such as 2026-03-07_logfile.csv in it");
    }
    for (const std::string& file : files) {
        AddFile(file, sources);
    }
}

void ReadDayFile(const Source& source, const Visit& visit, Progress& progress) {
    LineParser parser([&](const Entry& entry) { visit(entry, source.path); });
    ReadFile(source.path, [&](std::string_view bytes) {
        parser.Feed(bytes);
        progress.Add(bytes.size());
    });
    parser.Finish();
}

} // namespace

bool IsDayFile(const std::string& name) {
    return name.size() > kLogSuffix.size() &&
           name.compare(name.size() - kLogSuffix.size(), kLogSuffix.size(), kLogSuffix) == 0;
}

std::vector<std::string> DayFilesIn(const std::string& folder, std::error_code& error) {
    std::vector<std::string> files;
    fs::directory_iterator at(folder, error);
    while (!error && at != fs::directory_iterator()) {
        if (IsDayFile(at->path().filename())) {
            files.push_back(at->path());
        }
        at.increment(error);
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string FileName(const std::string& path) {
    return fs::path(path).filename();
}

std::vector<Source> FindSources(const std::vector<std::string>& paths) {
    std::vector<Source> sources;
    std::error_code ignored;
    for (const std::string& path : paths) {
        if (fs::is_directory(path, ignored)) {
            AddFolder(path, sources);
        } else {
            AddFile(path, sources);
        }
    }
    return sources;
}

bool ReadFile(const std::string& path, const std::function<void(std::string_view)>& take) {
    constexpr std::size_t pieceSize = 1 << 16;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                               std::fclose);
    if (!file) {
        ComplainOfErrno(path);
        return false;
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    const auto piece = std::make_unique<char[]>(pieceSize);
    errno = 0;
    for (std::size_t size = 0; (size = std::fread(piece.get(), 1, pieceSize, file.get())) > 0;) {
        take({piece.get(), size});
    }
    if (std::ferror(file.get()) != 0) {
        ComplainOfErrno(path);
        return false;
    }
    return true;
}

std::uint64_t TotalBytes(const std::vector<Source>& sources) {
    std::uint64_t total = 0;
    for (const Source& source : sources) {
        total += source.bytes;
    }
    return total;
}

void ReadSources(const std::vector<Source>& sources, const Visit& visit) {
    Progress progress(TotalBytes(sources));
    for (const Source& source : sources) {
        if (IsDatabase(source.path)) {
            ReadDatabase(source, visit, progress);
        } else {
            ReadDayFile(source, visit, progress);
        }
    }
}

void ReadRecords(const std::vector<std::string>& paths, const Visit& visit) {
    std::uint64_t broken = 0;
    ReadSources(FindSources(paths), [&](const Entry& entry, const std::string& file) {
        if (entry.IsRecord()) {
            visit(entry, file);
        } else {
            ++broken;
        }
    });
    if (broken > 0) {
        Complain(std::to_string(broken) + (broken == 1 ? " line is" : " lines are") +
                 " torn or unknown: summary names them");
    }
}

} // namespace tavrelin::daylog
