#include "log/Gnuplot.h"

#include "log/Complaint.h"
#include "log/Table.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace tavrelin::daylog {

namespace {

/// An open file, closed with this object.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }

    [[nodiscard]] int Number() const { return number_; }
    bool Close() {
        const int number = std::exchange(number_, -1);
        return number < 0 || close(number) == 0;
    }
    [[nodiscard]] bool Write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t written = write(number_, text.data(), text.size());
            if (written < 0 && errno != EINTR) {
                return false;
            }
            text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
        }
        return true;
    }
    /// All that was written to it.
    [[nodiscard]] std::string Text() const {
        std::string text;
        std::array<char, 1 << 16> piece{};
        for (ssize_t size = 0; (size = pread(number_, piece.data(), piece.size(),
                                             static_cast<off_t>(text.size()))) > 0;) {
            text.append(piece.data(), static_cast<std::size_t>(size));
        }
        return text;
    }

  private:
    int number_;
};

/// A file without a name or a disk, from which gnuplot reads or into which it writes.
Descriptor InMemory() {
    return Descriptor(memfd_create("tavrelin-log", MFD_CLOEXEC));
}

/// gnuplot's wait status; -1, told by Complain, when it cannot be started.
int RunGnuplot(const Descriptor& script, const Descriptor& picture, const Descriptor& messages) {
    posix_spawn_file_actions_t streams{};
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_adddup2(&streams, script.Number(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&streams, picture.Number(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&streams, messages.Number(), STDERR_FILENO);
    // Without the user's own settings.
    std::string program = "gnuplot";
    std::string option = "--default-settings";
    std::array<char*, 3> command{program.data(), option.data(), nullptr};
    pid_t process = -1;
    errno = posix_spawnp(&process, program.c_str(), &streams, nullptr, command.data(), environ);
    posix_spawn_file_actions_destroy(&streams);
    int status = 0;
    if (errno == ENOENT) {
        Complain("gnuplot is not installed; it draws the charts (Debian: gnuplot-nox)");
        return -1;
    }
    if (errno != 0 || waitpid(process, &status, 0) != process) {
        ComplainOfErrno("gnuplot");
        return -1;
    }
    return status;
}

/// Under a name of its own first, so that nobody ever finds half a picture.
bool WriteWhole(const std::string& path, std::string_view bytes) {
    std::string temporary = path + ".XXXXXX";
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.Number() < 0) {
        ComplainOfErrno(path);
        return false;
    }
    const mode_t mask = umask(0);
    umask(mask);
    if (!file.Write(bytes) || fchmod(file.Number(), 0666 & ~mask) != 0 || !file.Close() ||
        std::rename(temporary.c_str(), path.c_str()) != 0) {
        ComplainOfErrno(path);
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

} // namespace

bool DrawWithGnuplot(const std::string& script, const std::string& path) {
    const Descriptor input = InMemory();
    const Descriptor picture = InMemory();
    const Descriptor messages = InMemory();
    if (picture.Number() < 0 || messages.Number() < 0 || !input.Write(script) ||
        lseek(input.Number(), 0, SEEK_SET) != 0) {
        ComplainOfErrno("the script for gnuplot");
        return false;
    }
    const int status = RunGnuplot(input, picture, messages);
    if (status < 0) {
        return false;
    }
    const std::string bytes = picture.Text();
    if (status != 0 || bytes.empty()) {
        const std::string text = messages.Text();
        const std::size_t last = text.find_last_not_of("\n ");
        const std::size_t begin = text.rfind('\n', last) + 1;
        Complain(path + ": gnuplot failed" +
                 (text.empty() ? "" : ": " + Shown(text.substr(begin, last + 1 - begin))));
        return false;
    }
    return WriteWhole(path, bytes);
}

} // namespace tavrelin::daylog
