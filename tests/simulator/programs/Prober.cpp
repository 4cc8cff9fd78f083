// A program that makes one call on one path, from one place of a program, and tells what it saw. It
// asks in ways that the instrument never does: `simulate` must let none of them out to this
// machine.

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <ftw.h>
#include <functional>
#include <glob.h>
#include <iostream>
#include <pthread.h>
#include <string>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

namespace {

/// Shows what a call gave, and the text that it brought.
void Tell(long result, const std::string& text = "") {
    std::printf("%s %s\n", result < 0 ? strerrorname_np(errno) : "ok", text.c_str());
    std::fflush(stdout);
}

void TellSize(long result, off_t size) {
    Tell(result, result < 0 ? "" : std::to_string(size));
}

void ReadFrom(int file) {
    char text[64]{};
    Tell(file < 0 ? -1 : read(file, text, sizeof text - 1), text);
}

template <typename Stream>
void ReadStream(Stream* file) {
    char text[64]{};
    Tell(file != nullptr && std::fgets(text, sizeof text, file) != nullptr ? 0 : -1, text);
}

struct Call {
    const char* name;
    void (*make)(const char* path);
};

struct stat64 status;
const char* const kLink = "/tmp/tavrelin-prober-link";

constexpr Call kCalls[]{
    {"open", [](const char* path) { ReadFrom(open(path, O_RDONLY)); }},
    {"openat", [](const char* path) { ReadFrom(openat(AT_FDCWD, path, O_RDONLY)); }},
    {"creat", [](const char* path) { Tell(creat(path, 0666)); }},
    {"fopen", [](const char* path) { ReadStream(std::fopen(path, "r")); }},
    {"freopen", [](const char* path) { ReadStream(std::freopen(path, "r", stdin)); }},
    {"fstream",
     [](const char* path) {
         std::ifstream file(path);
         std::string text;
         std::getline(file, text);
         Tell(file ? 0 : -1, text);
     }},
    {"raw-open", [](const char* path) { ReadFrom(static_cast<int>(syscall(SYS_open, path, 0))); }},
    {"raw-openat2",
     [](const char* path) {
         const std::array<unsigned long, 3> how{};
         Tell(syscall(SYS_openat2, AT_FDCWD, path, how.data(), sizeof how));
     }},
    {"stat", [](const char* path) { TellSize(stat64(path, &status), status.st_size); }},
    {"lstat", [](const char* path) { TellSize(lstat64(path, &status), status.st_size); }},
    {"fstatat",
     [](const char* path) { TellSize(fstatat64(AT_FDCWD, path, &status, 0), status.st_size); }},
    {"raw-stat",
     [](const char* path) { TellSize(syscall(SYS_stat, path, &status), status.st_size); }},
    {"statx",
     [](const char* path) {
         struct statx extended {};
         Tell(statx(AT_FDCWD, path, 0, STATX_SIZE, &extended), std::to_string(extended.stx_size));
     }},
    {"access", [](const char* path) { Tell(access(path, R_OK)); }},
    {"eaccess", [](const char* path) { Tell(eaccess(path, R_OK)); }},
    {"faccessat", [](const char* path) { Tell(faccessat(AT_FDCWD, path, R_OK, AT_EACCESS)); }},
    {"readlink",
     [](const char* path) {
         char text[64]{};
         Tell(readlink(path, text, sizeof text - 1), text);
     }},
    {"readlinkat",
     [](const char* path) {
         char text[64]{};
         Tell(readlinkat(AT_FDCWD, path, text, sizeof text - 1), text);
     }},
    {"realpath", [](const char* path) { Tell(realpath(path, nullptr) != nullptr ? 0 : -1); }},
    {"statfs",
     [](const char* path) {
         struct statfs space {};
         Tell(statfs(path, &space), std::to_string(space.f_type));
     }},
    {"statvfs",
     [](const char* path) {
         struct statvfs space {};
         Tell(statvfs(path, &space));
     }},
    {"opendir",
     [](const char* path) {
         DIR* folder = opendir(path);
         std::string names;
         while (const dirent* entry = folder != nullptr ? readdir(folder) : nullptr) {
             names += entry->d_name + std::string(" ");
         }
         Tell(folder != nullptr ? 0 : -1, names);
     }},
    {"scandir",
     [](const char* path) {
         dirent** entries = nullptr;
         const int count = scandir(path, &entries, nullptr, alphasort);
         Tell(count, count > 2 ? entries[2]->d_name : "");
     }},
    {"glob",
     [](const char* path) {
         glob_t found{};
         const int error = glob((std::string(path) + "*").c_str(), 0, nullptr, &found);
         Tell(-error, found.gl_pathc > 0 ? found.gl_pathv[0] : "");
     }},
    {"ftw",
     [](const char* path) {
         Tell(nftw(
             path, [](const char*, const struct stat*, int, FTW*) { return 0; }, 4, 0));
     }},
    {"chdir",
     [](const char* path) {
         Tell(chdir(path));
         ReadFrom(open("export", O_RDONLY));
     }},
    {"mkdir", [](const char* path) { Tell(mkdir(path, 0755)); }},
    {"mkdirat", [](const char* path) { Tell(mkdirat(AT_FDCWD, path, 0755)); }},
    {"rmdir", [](const char* path) { Tell(rmdir(path)); }},
    {"unlink", [](const char* path) { Tell(unlink(path)); }},
    {"unlinkat", [](const char* path) { Tell(unlinkat(AT_FDCWD, path, 0)); }},
    {"remove", [](const char* path) { Tell(std::remove(path)); }},
    {"rename", [](const char* path) { Tell(std::rename(path, "/tmp/tavrelin-moved")); }},
    {"renameat",
     [](const char* path) { Tell(renameat(AT_FDCWD, path, AT_FDCWD, "/tmp/tavrelin-moved")); }},
    {"renameat2",
     [](const char* path) {
         Tell(renameat2(AT_FDCWD, path, AT_FDCWD, "/tmp/tavrelin-moved", RENAME_NOREPLACE));
     }},
    {"link", [](const char* path) { Tell(link("/etc/hostname", path)); }},
    {"linkat", [](const char* path) { Tell(linkat(AT_FDCWD, path, AT_FDCWD, kLink, 0)); }},
    {"symlink", [](const char* path) { Tell(symlink("/etc/hostname", path)); }},
    {"symlinkat", [](const char* path) { Tell(symlinkat("/etc/hostname", AT_FDCWD, path)); }},
    {"truncate", [](const char* path) { Tell(truncate(path, 0)); }},
    {"chmod", [](const char* path) { Tell(chmod(path, 0600)); }},
    {"fchmodat", [](const char* path) { Tell(fchmodat(AT_FDCWD, path, 0600, 0)); }},
    {"chown", [](const char* path) { Tell(chown(path, 1, 1)); }},
    {"lchown", [](const char* path) { Tell(lchown(path, 1, 1)); }},
    {"fchownat", [](const char* path) { Tell(fchownat(AT_FDCWD, path, 1, 1, 0)); }},
    {"utime", [](const char* path) { Tell(utime(path, nullptr)); }},
    {"utimes", [](const char* path) { Tell(utimes(path, nullptr)); }},
    {"utimensat", [](const char* path) { Tell(utimensat(AT_FDCWD, path, nullptr, 0)); }},
    {"mknod", [](const char* path) { Tell(mknod(path, S_IFIFO | 0600, 0)); }},
    {"mkfifo", [](const char* path) { Tell(mkfifo(path, 0600)); }},
    {"mkstemp",
     [](const char* path) {
         std::string name = std::string(path) + "/XXXXXX";
         Tell(mkstemp(name.data()));
     }},
    {"setxattr", [](const char* path) { Tell(setxattr(path, "trusted.a", "b", 1, 0)); }},
    {"getxattr",
     [](const char* path) {
         char text[16]{};
         Tell(getxattr(path, "trusted.decoy", text, sizeof text), text);
     }},
    {"listxattr",
     [](const char* path) {
         char text[64]{};
         Tell(listxattr(path, text, sizeof text), text);
     }},
    {"removexattr", [](const char* path) { Tell(removexattr(path, "trusted.decoy")); }},
    {"inotify",
     [](const char* path) { Tell(inotify_add_watch(inotify_init(), path, IN_ALL_EVENTS)); }},
    {"bind",
     [](const char* path) {
         sockaddr_un address{AF_UNIX, {}};
         std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
         const int file = socket(AF_UNIX, SOCK_STREAM, 0);
         Tell(bind(file, reinterpret_cast<sockaddr*>(&address), sizeof address));
     }},
    {"mount",
     [](const char* path) { Tell(syscall(SYS_mount, "none", path, "tmpfs", 0, nullptr)); }},
    {"umount", [](const char* path) { Tell(syscall(SYS_umount2, path, 0)); }},
    {"chroot", [](const char* path) { Tell(chroot(path)); }},
    {"execve",
     [](const char* path) {
         char* const none[]{nullptr};
         Tell(execve(path, none, none));
     }},
};

// --- places of a program that a call may come from

std::function<void()> work;

void InThread() {
    pthread_t thread{};
    pthread_create(
        &thread, nullptr,
        [](void*) -> void* {
            work();
            return nullptr;
        },
        nullptr);
    pthread_join(thread, nullptr);
}

void InHandler() {
    std::signal(SIGUSR1, [](int) { work(); });
    std::raise(SIGUSR1);
}

void InThreadsEnd() {
    pthread_t thread{};
    pthread_create(
        &thread, nullptr,
        [](void*) -> void* {
            pthread_key_t key{};
            pthread_key_create(&key, [](void*) { work(); });
            pthread_setspecific(key, &work);
            return nullptr;
        },
        nullptr);
    pthread_join(thread, nullptr);
}

void InFork() {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

void AtExit() {
    std::atexit([] { work(); });
}

struct Context {
    const char* name;
    void (*run)();
};

constexpr Context kContexts[]{
    {"plainly", [] { work(); }},  {"thread", InThread}, {"handler", InHandler},
    {"thread-end", InThreadsEnd}, {"fork", InFork},     {"at-exit", AtExit}};

template <typename Table>
int List(const Table& table) {
    for (const auto& row : table) {
        std::printf("%s\n", row.name);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2) {
        return std::strcmp(argv[1], "calls") == 0 ? List(kCalls) : List(kContexts);
    }
    if (argc == 5 && chdir(argv[4]) != 0) {
        return 98;
    }
    for (const Call& call : kCalls) {
        for (const Context& context : kContexts) {
            if (std::strcmp(argv[1], context.name) == 0 && std::strcmp(argv[2], call.name) == 0) {
                work = [&call, argv] { call.make(argv[3]); };
                context.run();
                return 0;
            }
        }
    }
    return 99;
}
