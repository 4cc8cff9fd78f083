// A program that does what its first argument says, and with most of them goes wrong.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <iostream>
#include <poll.h>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* exportFile = "/sys/class/gpio/export";

void exportLine(const char* number) {
    const int file = open(exportFile, O_WRONLY);
    static_cast<void>(write(file, number, std::strlen(number)) == 0);
    close(file);
}

void sleepFor(const char* milliseconds) {
    const long span = std::strtol(milliseconds, nullptr, 10);
    const timespec time{span / 1'000, span % 1'000 * 1'000'000};
    nanosleep(&time, nullptr);
}

// --- crashes

int segfault(const char* /*unused*/) {
    volatile int* nothing = nullptr;
    *nothing = 1;
    return 0;
}

int aborts(const char* /*unused*/) {
    std::abort();
}

int crashAfterAnExport(const char* number) {
    exportLine(number);
    sleepFor("1500");
    exportLine(number);
    std::raise(SIGSEGV);
    return 0;
}

// --- deadlocks

pthread_mutex_t first = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t second = PTHREAD_MUTEX_INITIALIZER;

void* takeSecondThenFirst(void* /*unused*/) {
    pthread_mutex_lock(&second);
    sleepFor("10");
    pthread_mutex_lock(&first);
    return nullptr;
}

int twoMutexes(const char* /*unused*/) {
    pthread_t thread{};
    pthread_mutex_lock(&first);
    pthread_create(&thread, nullptr, takeSecondThenFirst, nullptr);
    sleepFor("20");
    pthread_mutex_lock(&second);
    return 0;
}

int oneMutexTwice(const char* /*unused*/) {
    pthread_mutex_lock(&first);
    pthread_mutex_lock(&first);
    return 0;
}

int waitForAnEdgeThatNeverComes(const char* line) {
    exportLine(line);
    const int value = open("/sys/class/gpio/pioA7/value", O_RDONLY);
    char text[4];
    static_cast<void>(read(value, text, sizeof text) == 0);
    pollfd waiting{value, POLLPRI, 0};
    return poll(&waiting, 1, -1);
}

// --- what is not modelled

int openFolder(const char* path) {
    return opendir(path) != nullptr ? 0 : 1;
}

int openFile(const char* path) {
    return open(path, O_RDONLY) >= 0 ? 0 : 1;
}

int readByTheLibrary(const char* path) {
    char text[16];
    FILE* file = std::fopen(path, "r");
    return file != nullptr && std::fgets(text, sizeof text, file) != nullptr ? 0 : 1;
}

int becomeAnother(const char* program) {
    execlp(program, program, static_cast<char*>(nullptr));
    return 1;
}

void* nothingToDo(void* argument) {
    return argument;
}

int leaveAThread(const char* /*unused*/) {
    pthread_t thread{};
    pthread_create(&thread, nullptr, nothingToDo, nullptr);
    return pthread_detach(thread);
}

// --- ends and waits

int spin(const char* /*unused*/) {
    static volatile std::sig_atomic_t turning = 1;
    while (turning != 0) {
    }
    return 0;
}

int sleepAgainAndAgain(const char* milliseconds) {
    for (;;) {
        sleepFor(milliseconds);
    }
}

int sleepOnce(const char* milliseconds) {
    sleepFor(milliseconds);
    return 0;
}

int endWith(const char* status) {
    return static_cast<int>(std::strtol(status, nullptr, 10));
}

int spinReady(const char* /*unused*/) {
    std::cout << getpid() << std::endl;
    return spin("");
}

// --- input, output, other processes

int speak(const char* /*unused*/) {
    std::cout << "first, ";
    std::printf("second\n");
    std::cerr << "complaint\n";
    for (std::string line; std::getline(std::cin, line);) {
        std::cout << "heard " << line << std::endl;
    }
    std::cout << "T";
    return 0;
}

/// Tells in three ways of starting a process, and for itself, whether a path is there.
int lookAround(const char* path) {
    std::cout << "board " << (access(path, F_OK) == 0 ? "yes" : "no") << std::endl;
    const std::string question =
        "test -e " + std::string(path) + " && echo shell yes || echo shell no";
    static_cast<void>(std::system(question.c_str()) == 0);
    const pid_t child = fork();
    if (child == 0) {
        std::cout << "fork " << (access(path, F_OK) == 0 ? "yes" : "no") << std::endl;
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

constexpr Trouble troubles[]{
    {"segfault", segfault},
    {"abort", aborts},
    {"crash-after-export", crashAfterAnExport},
    {"two-mutexes", twoMutexes},
    {"one-mutex-twice", oneMutexTwice},
    {"edge-that-never-comes", waitForAnEdgeThatNeverComes},
    {"open-folder", openFolder},
    {"open-file", openFile},
    {"read-by-the-library", readByTheLibrary},
    {"become-another", becomeAnother},
    {"leave-a-thread", leaveAThread},
    {"spin", spin},
    {"spin-ready", spinReady},
    {"sleep-again", sleepAgainAndAgain},
    {"sleep", sleepOnce},
    {"status", endWith},
    {"speak", speak},
    {"look-around", lookAround},
};

} // namespace

int main(int argc, char** argv) {
    for (const Trouble& trouble : troubles) {
        if (argc > 1 && std::strcmp(argv[1], trouble.name) == 0) {
            return trouble.make(argc > 2 ? argv[2] : "");
        }
    }
    return 99;
}
