#include "tests/kernel/contract/Answers.h"

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <mntent.h>
#include <sys/mount.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace contract {
namespace {

using Path = const std::string&;

constexpr std::array kModes{Name{"f", F_OK}, Name{"r", R_OK}, Name{"w", W_OK}, Name{"x", X_OK}};
constexpr std::array kMountFlags{
    Name{"sync", static_cast<int>(MS_SYNCHRONOUS)}, Name{"ro", static_cast<int>(MS_RDONLY)},
    Name{"remount", static_cast<int>(MS_REMOUNT)},  Name{"nosuid", static_cast<int>(MS_NOSUID)},
    Name{"noexec", static_cast<int>(MS_NOEXEC)},    Name{"noatime", static_cast<int>(MS_NOATIME)},
    Name{"bind", static_cast<int>(MS_BIND)},        Name{"none", 0}};

std::string Show(Path path, const Words& /*unused*/) {
    const int file = open(path.c_str(), O_RDONLY);
    if (file < 0) {
        return "open: " + Outcome(file);
    }
    std::string shown = ReadOnce(file, 4096);
    close(file);
    return shown;
}

std::string Store(Path path, const Words& words) {
    const std::string& text = words[2];
    const int file = open(path.c_str(), O_WRONLY);
    if (file < 0) {
        return "open: " + Outcome(file);
    }
    const ssize_t count = write(file, text.data(), text.size());
    std::string outcome = count == static_cast<ssize_t>(text.size()) ? "ok" : Amount(count);
    close(file);
    return outcome;
}

std::string Stream(Path path, const Words& words) {
    std::ofstream stream(path);
    if (!stream) {
        return "no stream";
    }
    stream << words[2];
    return stream.flush() ? "ok" : "no flush";
}

std::string Stat(Path path, const Words& /*unused*/) {
    struct stat status {};
    const int result = stat(path.c_str(), &status);
    return TypeAndPermissions(result, status);
}

std::string LinkStat(Path path, const Words& /*unused*/) {
    struct stat status {};
    const int result = lstat(path.c_str(), &status);
    return TypeAndPermissions(result, status);
}

std::string Size(Path path, const Words& /*unused*/) {
    struct stat status {};
    const int result = stat(path.c_str(), &status);
    return result == 0 ? Amount(status.st_size) : Outcome(result);
}

std::string Device(Path path, const Words& /*unused*/) {
    struct stat status {};
    const int result = stat(path.c_str(), &status);
    return result == 0
               ? std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev))
               : Outcome(result);
}

std::string Same(Path path, const Words& words) {
    struct stat one {};
    struct stat other {};
    if (stat(path.c_str(), &one) != 0 || stat(words[2].c_str(), &other) != 0) {
        return Outcome(-1);
    }
    return one.st_ino == other.st_ino && one.st_dev == other.st_dev ? "same" : "another";
}

std::string FileSystemType(Path path, const Words& /*unused*/) {
    constexpr std::array types{Name{"sysfs", 0x62656572}, Name{"vfat", 0x4D44},
                               Name{"proc", 0x9FA0}, Name{"tmpfs", 0x01021994}};
    struct statfs system {};
    if (statfs(path.c_str(), &system) != 0) {
        return Outcome(-1);
    }
    for (const auto& [name, type] : types) {
        if (system.f_type == type) {
            return std::string(name);
        }
    }
    return "another";
}

std::string FileSystem(Path path, const Words& /*unused*/) {
    struct statfs system {};
    return Outcome(statfs(path.c_str(), &system));
}

std::string List(Path path, const Words& words) {
    DIR* folder = opendir(path.c_str());
    if (folder == nullptr) {
        return Outcome(-1);
    }
    bool found = false;
    while (const dirent* entry = readdir(folder)) {
        found = found || entry->d_name == words[2];
    }
    closedir(folder);
    return found ? "there" : "missing";
}

std::string ReadLink(Path path, const Words& /*unused*/) {
    std::array<char, 512> text{};
    return Outcome(readlink(path.c_str(), text.data(), text.size()));
}

std::string Table(Path target, const Words& /*unused*/) {
    FILE* table = setmntent("/etc/mtab", "r");
    if (table == nullptr) {
        return Outcome(-1);
    }
    std::string line = "missing";
    std::array<char, 1024> text{};
    mntent record{};
    while (getmntent_r(table, &record, text.data(), text.size()) != nullptr) {
        if (record.mnt_dir == target) {
            line = std::string(record.mnt_fsname) + " " + record.mnt_type + " " + record.mnt_opts;
        }
    }
    endmntent(table);
    return line;
}

std::string Mount(Path /*source*/, const Words& words) {
    const auto orNull = [](const std::string& word) {
        return word == "null" ? nullptr : word.c_str();
    };
    return Outcome(mount(orNull(words[1]), words[2].c_str(), orNull(words[3]),
                         static_cast<unsigned long>(Joined(kMountFlags, words[4])),
                         words[5].c_str()));
}

struct Call {
    std::string_view name;
    std::string (*make)(Path path, const Words& words);
};

constexpr std::array kCalls{
    Call{"show", Show},
    Call{"store", Store},
    Call{"stream", Stream},
    Call{"stat", Stat},
    Call{"lstat", LinkStat},
    Call{"size", Size},
    Call{"statfs", FileSystem},
    Call{"type", FileSystemType},
    Call{"device", Device},
    Call{"same", Same},
    Call{"list", List},
    Call{"readlink", ReadLink},
    Call{"table", Table},
    Call{"mount", Mount},
    Call{"umount", [](Path path, const Words&) { return Outcome(umount(path.c_str())); }},
    Call{"mkdir", [](Path path, const Words&) { return Outcome(mkdir(path.c_str(), 0755)); }},
    Call{"rmdir", [](Path path, const Words&) { return Outcome(rmdir(path.c_str())); }},
    Call{"unlink", [](Path path, const Words&) { return Outcome(unlink(path.c_str())); }},
    Call{"access",
         [](Path path, const Words& words) {
             return Outcome(access(path.c_str(), Joined(kModes, words[2])));
         }},
    Call{"truncate",
         [](Path path, const Words& words) {
             return Outcome(truncate(path.c_str(), Number(words[2])));
         }},
    Call{"rename",
         [](Path path, const Words& words) {
             return Outcome(rename(path.c_str(), words[2].c_str()));
         }},
};

} // namespace

std::string CallOnPath(const std::string& call, const std::string& path, const Words& words) {
    const auto* known =
        std::ranges::find_if(kCalls, [&](const Call& one) { return one.name == call; });
    return known != kCalls.end() ? known->make(path, words) : "not understood";
}

} // namespace contract
