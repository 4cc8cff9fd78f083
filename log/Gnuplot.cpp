#include "log/Gnuplot.h"

#include "log/Complaint.h"
#include "log/Table.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <unistd.h>

namespace tavrelin::daylog {

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// A file without a name, gone when it is closed.
File Nameless(const std::string& text) {
    File file(std::tmpfile(), std::fclose);
    if (file) {
        std::fputs(text.c_str(), file.get());
        std::fflush(file.get());
    }
    return file;
}

/// The shell's name for it.
std::string NameOf(const File& file) {
    return "/dev/fd/" + std::to_string(fileno(file.get()));
}

std::string RestOf(std::FILE* file) {
    std::string text;
    std::array<char, 1 << 16> piece{};
    for (std::size_t size = 0; (size = std::fread(piece.data(), 1, piece.size(), file)) > 0;) {
        text.append(piece.data(), size);
    }
    return text;
}

/// Under a name of its own first, so that nobody ever finds half a picture.
bool WriteWhole(const std::string& path, const std::string& bytes) {
    const std::string temporary = path + "." + std::to_string(getpid());
    std::ofstream file(temporary, std::ios::binary);
    file << bytes;
    file.close();
    if (!file || std::rename(temporary.c_str(), path.c_str()) != 0) {
        ComplainOfErrno(path);
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        return false;
    }
    return true;
}

/// The last line of what gnuplot said, which tells what is wrong.
void ComplainOfGnuplot(const std::string& path, const std::string& messages) {
    const std::size_t last = messages.find_last_not_of("\n ");
    const std::size_t begin = messages.rfind('\n', last) + 1;
    Complain(path + ": gnuplot failed" +
             (messages.empty() ? "" : ": " + Shown(messages.substr(begin, last + 1 - begin))));
}

} // namespace

bool DrawWithGnuplot(const std::string& script, const std::string& path) {
    constexpr int notFound = 127 << 8; // the shell's word for it
    const File input = Nameless(script);
    const File messages = Nameless("");
    if (!input || std::ferror(input.get()) != 0 || !messages) {
        ComplainOfErrno("the script for gnuplot");
        return false;
    }
    // Without the user's own settings.
    File gnuplot(
        popen(("gnuplot --default-settings <" + NameOf(input) + " 2>" + NameOf(messages)).c_str(),
              "r"),
        pclose);
    const std::string picture = gnuplot ? RestOf(gnuplot.get()) : "";
    const int status = gnuplot ? pclose(gnuplot.release()) : -1;
    if (status == notFound) {
        Complain("gnuplot is not installed; it draws the charts (Debian: gnuplot-nox)");
    } else if (status != 0 || picture.empty()) {
        std::rewind(messages.get());
        ComplainOfGnuplot(path, RestOf(messages.get()));
    } else {
        return WriteWhole(path, picture);
    }
    return false;
}

} // namespace tavrelin::daylog
