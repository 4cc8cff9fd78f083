// A program that does what its first argument says, and with most of them goes wrong.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <iostream>
#include <poll.h>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* kExportFile = "/sys/class/gpio/export";

void ExportLine(const char* number) {
    const int file = open(kExportFile, O_WRONLY);
    static_cast<void>(write(file, number, std::strlen(number)) == 0);
    close(file);
}

void SleepFor(const char* milliseconds) {
    const long span = std::strtol(milliseconds, nullptr, 10);
    const timespec time{span / 1'000, span % 1'000 * 1'000'000};
    nanosleep(&time, nullptr);
}

// --- crashes

int Segfault(const char* /*unused*/) {
    volatile int* nothing = nullptr;
    *nothing = 1;
    return 0;
}

int Aborts(const char* /*unused*/) {
    std::abort();
}

int CrashAfterAnExport(const char* number) {
    ExportLine(number);
    SleepFor("1500");
    ExportLine(number);
    std::raise(SIGSEGV);
    return 0;
}

// --- deadlocks

pthread_mutex_t first = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t second = PTHREAD_MUTEX_INITIALIZER;

void* TakeSecondThenFirst(void* /*unused*/) {
    pthread_mutex_lock(&second);
    SleepFor("10");
    pthread_mutex_lock(&first);
    return nullptr;
}

int TwoMutexes(const char* /*unused*/) {
    pthread_t thread{};
    pthread_mutex_lock(&first);
    pthread_create(&thread, nullptr, TakeSecondThenFirst, nullptr);
    SleepFor("20");
    pthread_mutex_lock(&second);
    return 0;
}

int OneMutexTwice(const char* /*unused*/) {
    pthread_mutex_lock(&first);
    pthread_mutex_lock(&first);
    return 0;
}

int WaitForAnEdgeThatNeverComes(const char* line) {
    ExportLine(line);
    const int value = open("/sys/class/gpio/pioA7/value", O_RDONLY);
    char text[4];
    static_cast<void>(read(value, text, sizeof text) == 0);
    pollfd waiting{value, POLLPRI, 0};
    return poll(&waiting, 1, -1);
}

// --- what is not modelled

int OpenFile(const char* path) {
    return open(path, O_RDONLY) >= 0 ? 0 : 1;
}

int BecomeAnother(const char* program) {
    execlp(program, program, static_cast<char*>(nullptr));
    return 1;
}

int WriteFromAFork(const char* path) {
    const int file = open(path, O_WRONLY);
    const pid_t child = fork();
    if (child == 0) {
        _exit(write(file, "1", 1) == 1 ? 0 : 1);
    }
    return waitpid(child, nullptr, 0) == child ? 0 : 1;
}

int LookFromAFork(const char* path) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(access(path, F_OK));
    }
    return waitpid(child, nullptr, 0) == child ? 0 : 1;
}

// --- ends and waits

int Spin(const char* /*unused*/) {
    static volatile std::sig_atomic_t turning = 1;
    while (turning != 0) {
    }
    return 0;
}

int SleepAgainAndAgain(const char* milliseconds) {
    for (;;) {
        SleepFor(milliseconds);
    }
}

int SleepOnce(const char* milliseconds) {
    SleepFor(milliseconds);
    return 0;
}

int EndWith(const char* status) {
    return static_cast<int>(std::strtol(status, nullptr, 10));
}

int SpinReady(const char* /*unused*/) {
    std::cout << getpid() << std::endl;
    return Spin("");
}

// --- input, output, other processes

int Speak(const char* /*unused*/) {
    std::cout << "first, ";
    std::printf("second\n");
    std::cerr << "complaint\n";
    for (std::string line; std::getline(std::cin, line);) {
        std::cout << "heard " << line << std::endl;
    }
    std::cout << "T";
    return 0;
}

/// Tells in two ways of starting a process, and for itself, whether a path is there.
int LookAround(const char* path) {
    std::cout << "board " << (access(path, F_OK) == 0 ? "yes" : "no") << std::endl;
    const std::string question =
        "test -e " + std::string(path) + " && echo shell yes || echo shell no";
    static_cast<void>(std::system(question.c_str()) == 0);
    const pid_t child = fork();
    if (child == 0) {
        execlp("sh", "sh", "-c", ("test -e " + std::string(path) + " || echo exec no").c_str(),
               static_cast<char*>(nullptr));
        _exit(1);
    }
    waitpid(child, nullptr, 0);
    std::cout << "preloaded " << (std::getenv("LD_PRELOAD") != nullptr ? "yes" : "no") << std::endl;
    return 0;
}

struct Trouble {
    const char* name;
    int (*make)(const char* argument);
};

constexpr Trouble kTroubles[]{
    {"segfault", Segfault},
    {"abort", Aborts},
    {"crash-after-export", CrashAfterAnExport},
    {"two-mutexes", TwoMutexes},
    {"one-mutex-twice", OneMutexTwice},
    {"edge-that-never-comes", WaitForAnEdgeThatNeverComes},
    {"open-file", OpenFile},
    {"become-another", BecomeAnother},
    {"look-from-a-fork", LookFromAFork},
    {"write-from-a-fork", WriteFromAFork},
    {"spin", Spin},
    {"spin-ready", SpinReady},
    {"sleep-again", SleepAgainAndAgain},
    {"sleep", SleepOnce},
    {"status", EndWith},
    {"speak", Speak},
    {"look-around", LookAround},
};

} // namespace

int main(int argc, char** argv) {
    for (const Trouble& trouble : kTroubles) {
        if (argc > 1 && std::strcmp(argv[1], trouble.name) == 0) {
            return trouble.make(argc > 2 ? argv[2] : "");
        }
    }
    return 99;
}
