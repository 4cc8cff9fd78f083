#include "simulator/launcher/OutputFiles.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <unistd.h>

namespace sim {
namespace {

namespace fs = std::filesystem;

/// A file of the run, by what names it and what it holds.
struct RunFile {
    std::string name;
    std::string path;
    std::string holds;
};

bool Writable(const std::string& path) {
    return path.empty() || path == kStandardOutput || std::ofstream(path, std::ios::app).is_open();
}

void Complain(const std::string& option, const std::string& path, int error, std::uint64_t end) {
    std::cerr << "simulate: " << option << " " << path << ": " << std::strerror(error) << " after "
              << end << " bytes; the rest of the run is not in it\n";
}

/// Writes the rest of a file from an offset on. 0 or an errno; the file then ends at the offset.
int WriteRest(const std::string& path, const FileBuffer& rest) {
    if (path == kStandardOutput) {
        const ssize_t written = write(STDOUT_FILENO, rest.text.data(), rest.used);
        return written == static_cast<ssize_t>(rest.used) ? 0 : (written < 0 ? errno : ENOSPC);
    }
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) {
        return errno;
    }
    const auto end = static_cast<off_t>(rest.offset);
    const bool whole =
        pwrite(file, rest.text.data(), rest.used, end) == static_cast<ssize_t>(rest.used);
    const int error = whole ? 0 : (ftruncate(file, end) == 0 ? ENOSPC : errno);
    close(file);
    return error;
}

} // namespace

void FillStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) ==
                              0);
        }
    }
}

std::string OutputProblem(const LauncherOptions& options, const std::string& program) {
    const std::array files{RunFile{"", program, "the program"},
                           RunFile{"", options.scenarioFile, "the scenario"},
                           RunFile{"--events", options.run.eventsFile, "the events"},
                           RunFile{"--vcd", options.run.vcdFile, "the waveforms"},
                           RunFile{"--board", options.run.boardFile, "the board"},
                           RunFile{"--summary", options.summaryFile, "the summary"}};
    for (const RunFile& file : files) {
        for (const RunFile* other = files.data(); other != &file && !file.name.empty(); ++other) {
            std::error_code ignored;
            if (fs::equivalent(other->path, file.path, ignored)) {
                return file.name + " " + file.path + ": holds " + other->holds +
                       " already; takes another file";
            }
        }
        if (!file.name.empty() && !Writable(file.path)) {
            return file.name + " " + file.path +
                   ": cannot be written to; takes a file in a folder that is there";
        }
    }
    return "";
}

bool SaveRest(const std::string& option, const std::string& path, const FileBuffer& rest) {
    const int error = rest.used == 0 || rest.error != 0 ? rest.error.load() : WriteRest(path, rest);
    if (error != 0) {
        Complain(option, path, error, rest.offset);
    }
    return error == 0;
}

bool Save(const std::string& option, const std::string& path, const std::string& text) {
    if (path.empty()) {
        return true;
    }
    std::ofstream file(path, std::ios::trunc);
    errno = 0;
    file << text << std::flush;
    if (!file) {
        Complain(option, path, errno, 0);
    }
    return file.good();
}

} // namespace sim
