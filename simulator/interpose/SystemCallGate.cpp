// The gate at the system call: Linux hands every system call of a thread to that thread first, as a
// signal, while a byte of the thread's own says so (syscall user dispatch, since 5.11).

#include "simulator/interpose/SystemCallGate.h"

#include "simulator/interpose/ProgramSignals.h"
#include "simulator/interpose/SystemCall.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <dlfcn.h>
#include <linux/prctl.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>

// The way back from the handler is a system call too, of code that the kernel lets through by its
// place. What follows the call belongs to that place.
asm(".text\n"
    "SimulatedBoardReturns: mov $15, %eax\n" // rt_sigreturn
    "syscall\n"
    "ud2\n"
    "SimulatedBoardReturned:\n");
extern "C" void SimulatedBoardReturns();
extern "C" void SimulatedBoardReturned();

namespace sim {
namespace {

constexpr char kThrough = 0; // SYSCALL_DISPATCH_FILTER_ALLOW
constexpr char kHeld = 1;    // SYSCALL_DISPATCH_FILTER_BLOCK

thread_local volatile char selector = kThrough;
thread_local bool armed = false;
thread_local bool handling = false; ///< a system call that came to the gate
thread_local int inside = 0;        ///< how many times the simulation was entered and not left

long Raw(long number, const std::array<long, 6>& arguments) {
    long result = number;
    register long fourth asm("r10") = arguments[3];
    register long fifth asm("r8") = arguments[4];
    register long sixth asm("r9") = arguments[5];
    asm volatile("syscall"
                 : "+a"(result)
                 : "D"(arguments[0]), "S"(arguments[1]), "d"(arguments[2]), "r"(fourth), "r"(fifth),
                   "r"(sixth)
                 : "rcx", "r11", "memory");
    return result;
}

/// The library that a piece of code or data belongs to; null for none.
const void* LibraryOf(const void* address) {
    Dl_info found{};
    return address != nullptr && dladdr(address, &found) != 0 ? found.dli_fbase : nullptr;
}

const void* sanitizer = nullptr; ///< the library of the program's sanitizer

/// A sanitizer's locks are taken by threads after their end, too, in real time: so are its waits.
bool IsSanitizers(const void* code) {
    return sanitizer != nullptr && LibraryOf(code) == sanitizer;
}

/// The leak checker of a sanitizer looks at the process by a helper that shares its memory. It is
/// the last that such a process does, so its calls go through from then on.
bool IsLeakCheckers(long number, long flags) {
    return number == SYS_clone && (flags & CLONE_UNTRACED) != 0;
}

void OnSystemCall(int /*signal*/, siginfo_t* information, void* context) {
    auto& registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    auto& blocked =
        *reinterpret_cast<std::uint64_t*>(&static_cast<ucontext_t*>(context)->uc_sigmask);
    if (information->si_syscall == SYS_rt_sigreturn) {
        // A handler of the program ends: its frame lies where its stack pointer stands.
        asm volatile("mov %0, %%rsp\n"
                     "jmp SimulatedBoardReturns"
                     :
                     : "r"(registers[REG_RSP])
                     : "memory");
        __builtin_unreachable();
    }
    selector = kThrough;
    const bool within = handling; // a handler that came while another system call waited
    handling = true;
    const int before = errno;
    if (IsLeakCheckers(information->si_syscall, registers[REG_RDI])) {
        armed = false;
        constexpr long callItself = 2; // bytes
        registers[REG_RIP] -= callItself;
        registers[REG_RAX] = information->si_syscall;
    } else {
        const std::array<long, 6> arguments{registers[REG_RDI], registers[REG_RSI],
                                            registers[REG_RDX], registers[REG_R10],
                                            registers[REG_R8],  registers[REG_R9]};
        registers[REG_RAX] = IsSanitizers(information->si_call_addr)
                                 ? Raw(information->si_syscall, arguments)
                                 : AnswerSystemCall(information->si_syscall, arguments, blocked);
    }
    blocked &= ~program_signals::TakeDeferred();
    errno = before;
    handling = within;
    selector = armed ? kHeld : kThrough;
}

/// As the kernel takes it.
struct KernelAction {
    void (*handler)(int, siginfo_t*, void*);
    unsigned long flags;
    void (*restorer)();
    std::uint64_t mask;
};

bool TakeSignal() {
    sanitizer = LibraryOf(dlsym(RTLD_DEFAULT, "__sanitizer_print_stack_trace"));
    return system_calls::Handle(SIGSYS, OnSystemCall, ~std::uint64_t{0});
}

} // namespace

long Trap::Pass(long number, const std::array<long, 6>& arguments) {
    return Raw(number, arguments);
}

namespace system_calls {

bool Arm() {
    static const bool taken = TakeSignal();
    const auto begin = reinterpret_cast<unsigned long>(SimulatedBoardReturns);
    const auto length = reinterpret_cast<unsigned long>(SimulatedBoardReturned) - begin;
    armed = taken &&
            prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, begin, length, &selector) == 0;
    selector = armed ? kHeld : kThrough;
    return armed;
}

bool Handle(int signal, void (*handler)(int, siginfo_t*, void*), std::uint64_t keptOut) {
    constexpr unsigned long restorer = 0x0400'0000; // SA_RESTORER
    const KernelAction action{handler, SA_SIGINFO | SA_RESTART | restorer, SimulatedBoardReturns,
                              keptOut};
    return Raw(SYS_rt_sigaction, {signal, reinterpret_cast<long>(&action), 0,
                                  static_cast<long>(sizeof action.mask)}) == 0;
}

void Disarm() {
    selector = kThrough;
    if (armed) {
        armed = false;
        prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_OFF, 0, 0, 0);
    }
}

bool IsArmed() {
    return armed;
}

bool IsInside() {
    return inside != 0;
}

char Open() {
    ++inside;
    const char before = selector;
    selector = kThrough;
    return before;
}

void Restore(char before) {
    --inside;
    if (inside == 0 && armed && !handling) {
        if (const std::uint64_t came = program_signals::TakeDeferred(); came != 0) {
            Raw(SYS_rt_sigprocmask, {SIG_UNBLOCK, reinterpret_cast<long>(&came), 0, sizeof came});
        }
    }
    selector = before;
}

char Shut() {
    const char before = selector;
    selector = armed ? kHeld : kThrough;
    return before;
}

void GoOn(char before) {
    selector = before;
}

} // namespace system_calls
} // namespace sim
