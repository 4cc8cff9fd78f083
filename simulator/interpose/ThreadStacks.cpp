#include "simulator/interpose/ThreadStacks.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <dlfcn.h>
#include <map>
#include <sstream>
#include <string_view>

namespace sim::stacks {
namespace {

using Word = volatile std::uintptr_t;
constexpr std::ptrdiff_t kPainted = (64 << 10) / sizeof(std::uintptr_t);
constexpr std::ptrdiff_t kOwnFrame = 64; // words that painting itself may use
constexpr std::uintptr_t kPaint = 0x5AFE'57AC;

struct Stack {
    const void* function = nullptr;
    Word* top = nullptr;
};

Stack mainStack;
thread_local Stack ownStack;

std::map<const void*, std::size_t>& Deepest() {
    static std::map<const void*, std::size_t> known;
    return known;
}

// What lies below a frame is nobody's: a sanitizer may have marked it as such.
__attribute__((no_sanitize("address", "thread"))) void Paint(Word* top) {
    for (Word* word = top - kPainted; word < top - kOwnFrame; ++word) {
        *word = kPaint;
    }
}

__attribute__((no_sanitize("address", "thread"))) void Note(const Stack& stack) {
    Word* word = stack.top - kPainted;
    while (word < stack.top - kOwnFrame && *word == kPaint) {
        ++word;
    }
    const auto used = static_cast<std::size_t>(stack.top - word) * sizeof(std::uintptr_t);
    std::size_t& deepest = Deepest()[stack.function];
    deepest = std::max(deepest, used);
}

std::string NameOf(const void* function) {
    Dl_info file{};
    if (function == nullptr || dladdr(function, &file) == 0) {
        return "main";
    }
    const std::string_view path = file.dli_fname;
    std::ostringstream name;
    name << path.substr(path.rfind('/') + 1) << "+0x" << std::hex
         << static_cast<const char*>(function) - static_cast<const char*>(file.dli_fbase);
    return name.str();
}

} // namespace

[[gnu::noinline]] void Begin(const void* function) {
    if (!wanted) {
        return;
    }
    Stack& stack = function == nullptr ? mainStack : ownStack;
    stack = {function, static_cast<Word*>(__builtin_frame_address(0))};
    Paint(stack.top);
}

void End() {
    if (ownStack.top != nullptr) {
        Note(ownStack);
    }
}

std::string Table() {
    if (mainStack.top == nullptr) {
        return "";
    }
    Note(mainStack);
    std::string lines;
    for (const auto& [function, bytes] : Deepest()) {
        lines += NameOf(function) + " " + std::to_string(bytes) + "\n";
    }
    return lines;
}

} // namespace sim::stacks
