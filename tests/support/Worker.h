#pragma once

#include <gtest/gtest.h>

#include <pthread.h>

#include <functional>
#include <utility>

namespace tavrelin {

/// A thread of the instrument that does one piece of work. It is ready at once and runs when the
/// test's own thread waits.
class Worker {
  public:
    explicit Worker(std::function<void()> work)
        : work_(std::move(work)), started_(pthread_create(&thread_, nullptr, &Body, this) == 0) {
        EXPECT_TRUE(started_);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() { Join(); }

    void Join() {
        if (started_) {
            pthread_join(thread_, nullptr);
            started_ = false;
        }
    }

  private:
    static void* Body(void* self) {
        static_cast<Worker*>(self)->work_();
        return nullptr;
    }

    std::function<void()> work_;
    pthread_t thread_{};
    bool started_;
};

} // namespace tavrelin
