#include "simulator/launcher/Processor.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

namespace sim {
namespace {

constexpr unsigned kLooksBetween = 5; ///< from one judgement of the crowd to the next

cpu_set_t Only(int processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(static_cast<unsigned>(processor), &set);
    return set;
}

double Read(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Where the program ran last; negative when it has ended.
int ProcessorOf(pid_t program) {
    constexpr int fieldsBetween = 36; // from the name, which ends in a parenthesis
    std::ifstream status("/proc/" + std::to_string(program) + "/stat");
    std::string field;
    std::getline(status, field, ')');
    for (int i = 0; i < fieldsBetween; ++i) {
        status >> field;
    }
    int processor = -1;
    return status >> processor ? processor : -1;
}

} // namespace

void Processor::StayHere() {
    if (const int processor = sched_getcpu(); processor >= 0) {
        const cpu_set_t set = Only(processor);
        sched_setaffinity(0, sizeof set, &set);
    }
}

// Two that stand in each other's way are not to be let go at once, as far as their numbers go.
Processor::Processor(pid_t program)
    : program_(program), looks_(static_cast<unsigned>(program) % kLooksBetween), last_(UntilNow()) {
    sched_getaffinity(0, sizeof all_, &all_);
}

Processor::Seconds Processor::UntilNow() const {
    clockid_t clock{};
    const bool runs = clock_getcpuclockid(program_, &clock) == 0;
    return {runs ? Read(clock) : 0.0, Read(CLOCK_MONOTONIC)};
}

bool Processor::Crowded() {
    const Seconds before = last_;
    last_ = UntilNow();
    return last_.had - before.had < 0.9 * (last_.passed - before.passed);
}

void Processor::Look() {
    if (free_) {
        if (const int processor = ProcessorOf(program_); processor >= 0) {
            Keep(Only(processor));
        }
        free_ = false;
    } else if (++looks_ % kLooksBetween == 0 && Crowded()) {
        Keep(all_);
        free_ = true;
    }
}

void Processor::Keep(const cpu_set_t& processors) const {
    std::error_code ended; // the program, meanwhile
    const std::string threads = "/proc/" + std::to_string(program_) + "/task";
    for (std::filesystem::directory_iterator thread(threads, ended), end; !ended && thread != end;
         thread.increment(ended)) {
        sched_setaffinity(std::stoi(thread->path().filename().string()), sizeof processors,
                          &processors);
    }
}

} // namespace sim
