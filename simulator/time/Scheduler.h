#pragma once

#include "simulator/board/Nanoseconds.h"
#include "simulator/board/Noise.h"
#include "simulator/time/RunEnd.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// In which order threads that could run do run.
enum class ThreadOrder {
    Arrival, ///< first ready, first run; a thread runs until it waits
    Seeded,  ///< picked by the seed, with hand-overs at any operation
    Given    ///< as Arrival, but at the choices that are given
};

/// How the threads of a run share the processor.
struct ThreadSetup {
    ThreadOrder order = ThreadOrder::Arrival;
    std::vector<std::uint64_t> preempt{}; ///< Given: choices of each step (Scheduler::StepBegan)
    bool ioParallel = false;              ///< others run while a call takes its time
    bool console = false;                 ///< the event log tells what each thread shows
};

/// Runs the program's threads one at a time, in an order that depends on nothing but the program
/// and the seed, and lets board time pass when all of them wait. A thread runs until it sleeps,
/// waits or ends.
class Scheduler {
  public:
    struct Thread {
        explicit Thread(unsigned n) : number(n) {}

        const unsigned number; ///< 1 is the main thread; counted in order of creation
        std::atomic<std::uint32_t> go{0};
        Nanoseconds wakeAt = kNever;
        const void* waitsFor = nullptr;
        std::uint32_t channels = ~0U; ///< wakes of its key that it hears: those that share a bit
        std::string_view waitReason;
        bool woken = false;       ///< its last wait ended by a wake, not by time
        bool awaitsBoard = false; ///< asleep no longer than to the board's next event
        bool finished = false;
        int task = 0;          ///< the kernel's number of it
        bool detached = false; ///< nobody joins it
    };

    /// end: called when no thread can ever run again, with what each waits for.
    Scheduler(ThreadOrder order, std::uint64_t seed, const RunEnd& end)
        : Scheduler(ThreadSetup{.order = order}, seed, end) {}
    Scheduler(const ThreadSetup& setup, std::uint64_t seed, const RunEnd& end)
        : order_(setup.order), preempt_(setup.preempt), noise_(seed), end_(end) {}

    /// Carries board time on to a moment; called when nothing can run before it.
    std::function<void(Nanoseconds)> advanceTo;
    /// Tells board time.
    std::function<Nanoseconds()> now;

    /// Makes the calling thread the one that runs, as thread 1.
    Thread& AdoptMainThread();
    /// A new thread, ready to run after those that are ready already.
    Thread& Create();
    /// Called first by a new thread: returns when it is its turn.
    void Begin(Thread& self);
    /// Called last by a thread: hands over and returns at once. One that is detached is dropped.
    void Finish(Thread& self);
    /// Drops a thread that ended.
    void Forget(Thread& thread);

    /// Lets others run until board time reaches a moment or somebody wakes the key; kNever waits
    /// for ever. True when it was woken. The reason names the wait in a deadlock.
    bool SleepUntil(Thread& self, Nanoseconds moment, std::string_view reason,
                    const void* key = nullptr);
    /// Waits until somebody wakes the key.
    void WaitFor(Thread& self, const void* key, std::string_view reason);
    void Wake(const void* key) { WakeSome(key, ~std::size_t{0}); }
    /// Wakes those who wait for the key on one of the channels, in order of arrival; how many.
    std::size_t WakeSome(const void* key, std::size_t most, std::uint32_t channels = ~0U);
    /// Has those who wait for the key wait for another one, as the last to arrive there; how many.
    std::size_t Move(const void* key, std::size_t most, const void* other);
    /// Lets those run that can, and then the calling thread again.
    void Yield(Thread& self);
    /// Something was planned on the board for a moment to come: who sleeps to its next event wakes
    /// by then.
    void WakeForBoard(Nanoseconds moment);
    /// Hands over to any thread that could run, where the seed or a given choice has it so.
    void Chance(Thread& self);
    /// Choices are counted anew, from 1, as a step begins: wherever a thread may go on, one for
    /// each other that could go on instead.
    void StepBegan(std::uint64_t step);
    /// How many each step had so far, where they are given.
    const std::vector<std::uint64_t>& Choices() const { return choices_; }
    /// Steps that came to every choice given.
    std::uint64_t StepsPreempted() const { return stepsPreempted_; }

    /// The kernel's number of the thread that runs; 0 when it is none of the program's.
    int CurrentTask() const { return current_ != nullptr ? current_->task : 0; }
    unsigned Current() const { return current_ != nullptr ? current_->number : 0; }
    /// Threads that have not been joined, the main thread included.
    std::size_t Alive() const { return threads_.size(); }

    /// "thread 2 waits for a mutex that thread 1 locked; ..."
    std::string WhoWaitsForWhat() const;

  private:
    /// Takes those who wait for the key out of the waiting, in order of arrival.
    std::vector<Thread*> Take(const void* key, std::size_t most, std::uint32_t channels);
    void HandOver(Thread& self);
    Thread& Next();
    /// Readies those whose moment has come; when the first of the others wakes.
    Nanoseconds WakeSleepers();
    Thread& PickReady();
    Thread& TakeReady(std::size_t index);
    /// Which of so many others goes on instead, from 1, if a given choice says so; else 0.
    std::size_t Instead(std::size_t others);
    void Run(Thread& thread);

    ThreadOrder order_;
    std::vector<std::uint64_t> preempt_;
    std::vector<std::uint64_t> choices_; ///< of each step
    std::size_t preempted_ = 0;          ///< choices given that this step came to
    std::uint64_t stepsPreempted_ = 0;
    Noise noise_;
    const RunEnd& end_;
    unsigned created_ = 0;
    Thread* current_ = nullptr;
    std::vector<std::unique_ptr<Thread>> threads_;
    std::deque<Thread*> ready_;
    std::vector<Thread*> waiting_; ///< asleep or waiting, in order of arrival
};

/// The calling thread as the scheduler knows it; null for a thread that does not take part in a
/// simulation.
Scheduler::Thread* ThreadSelf();
void SetThreadSelf(Scheduler::Thread* thread);

} // namespace sim
