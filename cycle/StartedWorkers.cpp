#include "cycle/StartedWorkers.h"

#include "cycle/StepRequest.h"

#include <algorithm>

namespace tavrelin {

namespace {

std::size_t IndexOf(StepWorker worker) {
    return static_cast<std::size_t>(worker);
}

} // namespace

bool StartedWorkers::Start(StepWorker worker, void* (*entry)(void*), StepRequest& request) {
    pthread_t thread{};
    if (pthread_create(&thread, nullptr, entry, &request) != 0) {
        return false;
    }
    threads_[IndexOf(worker)] = thread;
    return true;
}

std::size_t StartedWorkers::Count() const {
    return static_cast<std::size_t>(
        std::count_if(threads_.begin(), threads_.end(),
                      [](const std::optional<pthread_t>& thread) { return thread.has_value(); }));
}

std::optional<StartedWorkers::JoinResult> StartedWorkers::Join(StepWorker worker) {
    std::optional<pthread_t>& thread = threads_[IndexOf(worker)];
    if (!thread) {
        return std::nullopt;
    }
    void* exitValue = nullptr;
    const bool joined = pthread_join(*thread, &exitValue) == 0;
    thread.reset(); // also after a failed join: a second one would be worse than a lost thread
    return JoinResult{.joined = joined, .ran = exitValue != nullptr};
}

} // namespace tavrelin
