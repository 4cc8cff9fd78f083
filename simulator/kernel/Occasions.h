#pragma once

#include "simulator/board/Occasion.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// What is to happen at steps, measurements and calls of the run: each once.
class Occasions {
  public:
    void Await(const Occasion& occasion, std::function<void()> action);
    /// So many steps have begun, and so many measurements are complete.
    void Counted(std::uint64_t steps, std::uint64_t measurements);
    /// A call is about to be answered.
    void Called(std::string_view call, std::string_view path);
    /// Those that have not come, in words; each ends in ", ".
    std::string Missing() const;

  private:
    struct Awaited {
        Occasion occasion;
        std::function<void()> action;
        std::uint64_t met = 0;
        bool past = false;
    };

    std::vector<Awaited> awaited_;
};

} // namespace sim
