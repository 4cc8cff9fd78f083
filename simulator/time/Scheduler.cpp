#include "simulator/time/Scheduler.h"

#include <algorithm>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace sim {
namespace {

/// Handing over is one futex word per thread: 0 wait, 1 go.
void AwaitGo(std::atomic<std::uint32_t>& word) {
    while (word.load(std::memory_order_acquire) == 0) {
        syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
    }
    word.store(0, std::memory_order_relaxed);
}

void GiveGo(std::atomic<std::uint32_t>& word) {
    word.store(1, std::memory_order_release);
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

thread_local Scheduler::Thread* ofThisThread = nullptr;

/// One chance in so many that the seed takes the processor away at an operation.
constexpr std::uint64_t kChanceOneIn = 4;

} // namespace

Scheduler::Thread& Scheduler::AdoptMainThread() {
    Thread& thread = Create();
    ready_.pop_back();
    thread.task = gettid();
    current_ = &thread;
    return thread;
}

Scheduler::Thread& Scheduler::Create() {
    threads_.push_back(std::make_unique<Thread>(++created_));
    ready_.push_back(threads_.back().get());
    return *threads_.back();
}

void Scheduler::Begin(Thread& self) {
    self.task = gettid();
    AwaitGo(self.go);
}

void Scheduler::Finish(Thread& self) {
    self.finished = true;
    Wake(&self);
    if (self.detached) {
        Forget(self);
    }
    Run(Next());
}

void Scheduler::Forget(Thread& thread) {
    std::erase(ready_, &thread);
    std::erase_if(threads_, [&](const auto& held) { return held.get() == &thread; });
}

bool Scheduler::SleepUntil(Thread& self, Nanoseconds moment, std::string_view reason,
                           const void* key) {
    self.wakeAt = moment;
    self.waitsFor = key;
    self.waitReason = reason;
    self.woken = false;
    waiting_.push_back(&self);
    HandOver(self);
    return self.woken;
}

void Scheduler::WaitFor(Thread& self, const void* key, std::string_view reason) {
    SleepUntil(self, kNever, reason, key);
}

std::vector<Scheduler::Thread*> Scheduler::Take(const void* key, std::size_t most,
                                                std::uint32_t channels) {
    std::vector<Thread*> taken;
    std::erase_if(waiting_, [&](Thread* thread) {
        const bool meant =
            taken.size() < most && thread->waitsFor == key && (thread->channels & channels) != 0;
        if (meant) {
            taken.push_back(thread);
        }
        return meant;
    });
    return taken;
}

std::size_t Scheduler::WakeSome(const void* key, std::size_t most, std::uint32_t channels) {
    const std::vector<Thread*> woken = Take(key, most, channels);
    for (Thread* thread : woken) {
        thread->woken = true;
        ready_.push_back(thread);
    }
    return woken.size();
}

std::size_t Scheduler::Move(const void* key, std::size_t most, const void* other) {
    const std::vector<Thread*> moved = Take(key, most, ~0U);
    for (Thread* thread : moved) {
        thread->waitsFor = other;
        waiting_.push_back(thread);
    }
    return moved.size();
}

void Scheduler::Yield(Thread& self) {
    ready_.push_back(&self);
    HandOver(self);
}

void Scheduler::WakeForBoard(Nanoseconds moment) {
    for (Thread* thread : waiting_) {
        if (thread->awaitsBoard) {
            thread->wakeAt = std::min(thread->wakeAt, moment);
        }
    }
}

void Scheduler::Chance(Thread& self) {
    if (order_ == ThreadOrder::Arrival) {
        return;
    }
    WakeSleepers();
    if (ready_.empty()) {
        return;
    }
    if (order_ == ThreadOrder::Seeded) {
        if (noise_.Below(kChanceOneIn) == 0) {
            Yield(self);
        }
    } else if (const std::size_t other = Instead(ready_.size()); other != 0) {
        Thread& chosen = TakeReady(other - 1);
        ready_.push_back(&self);
        Run(chosen);
        AwaitGo(self.go);
    }
}

void Scheduler::StepBegan(std::uint64_t step) {
    if (order_ == ThreadOrder::Given && step > choices_.size()) {
        choices_.resize(static_cast<std::size_t>(step));
        preempted_ = 0;
    }
}

std::size_t Scheduler::Instead(std::size_t others) {
    if (choices_.empty()) {
        return 0;
    }
    const std::uint64_t before = choices_.back();
    choices_.back() += others;
    for (const std::uint64_t choice : preempt_) {
        if (choice > before && choice <= choices_.back()) {
            stepsPreempted_ += ++preempted_ == preempt_.size() ? 1 : 0;
            return static_cast<std::size_t>(choice - before);
        }
    }
    return 0;
}

void Scheduler::HandOver(Thread& self) {
    Thread& chosen = Next();
    if (&chosen == &self) {
        current_ = &self;
        return;
    }
    Run(chosen);
    AwaitGo(self.go);
}

void Scheduler::Run(Thread& thread) {
    current_ = &thread;
    GiveGo(thread.go);
}

Scheduler::Thread& Scheduler::Next() {
    for (;;) {
        const Nanoseconds earliest = WakeSleepers();
        if (!ready_.empty()) {
            return PickReady();
        }
        if (earliest == kNever) {
            end_(Ending::Deadlock, WhoWaitsForWhat());
        }
        advanceTo(earliest);
    }
}

Nanoseconds Scheduler::WakeSleepers() {
    const Nanoseconds moment = now();
    for (;;) {
        const auto first = std::ranges::min_element(
            waiting_, {}, [](const Thread* thread) { return thread->wakeAt; });
        if (first == waiting_.end() || (*first)->wakeAt > moment) {
            return first == waiting_.end() ? kNever : (*first)->wakeAt;
        }
        ready_.push_back(*first);
        waiting_.erase(first);
    }
}

Scheduler::Thread& Scheduler::PickReady() {
    switch (order_) {
    case ThreadOrder::Seeded:
        return TakeReady(static_cast<std::size_t>(noise_.Below(ready_.size())));
    case ThreadOrder::Given:
        return TakeReady(Instead(ready_.size() - 1));
    case ThreadOrder::Arrival:
        break;
    }
    return TakeReady(0);
}

Scheduler::Thread& Scheduler::TakeReady(std::size_t index) {
    Thread& thread = *ready_[index];
    ready_.erase(ready_.begin() + static_cast<std::ptrdiff_t>(index));
    return thread;
}

std::string Scheduler::WhoWaitsForWhat() const {
    std::string text;
    for (const Thread* thread : waiting_) {
        text += (text.empty() ? "" : "; ") + std::string("thread ") +
                std::to_string(thread->number) + " waits for ";
        text += thread->waitReason;
    }
    return text.empty() ? "no thread is left" : text;
}

Scheduler::Thread* ThreadSelf() {
    return ofThisThread;
}
void SetThreadSelf(Scheduler::Thread* thread) {
    ofThisThread = thread;
}

} // namespace sim
