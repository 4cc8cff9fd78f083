// Counts the system calls of the instrument's operations on the simulated board and prints them as
// a table. Ends with status 1 when a GPIO access needs more than it may.

#include "app/RunCycleStep.h"
#include "cycle/MeasurementCycle.h"
#include "cycle/StateTable.h"
#include "platform/GpioPin.h"
#include "platform/PwmChannel.h"
#include "platform/SpiDevice.h"
#include "simulator/testing/SimulatedBoard.h"
#include "storage/DataLog.h"

#include <array>
#include <cstdint>
#include <functional>
#include <iomanip>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace tavrelin {

namespace {

using Counts = std::map<std::string, std::uint64_t, std::less<>>;

constexpr std::uint64_t kNoLimit = 0;
constexpr std::uint64_t kGpioLimit = 4;

// A free mutex is locked and unlocked without the kernel.
bool EntersTheKernel(const std::string& call) {
    return call.rfind("pthread_mutex", 0) != 0;
}

struct Row {
    std::string operation;
    std::uint64_t atMost;
    Counts calls;

    [[nodiscard]] std::uint64_t Total() const {
        std::uint64_t total = 0;
        for (const auto& [name, count] : calls) {
            total += count;
        }
        return total;
    }
    [[nodiscard]] bool TooMany() const { return atMost != kNoLimit && Total() > atMost; }
};

class Bench {
  public:
    explicit Bench(sim::SimulatedBoard& board) : board_(board) {}

    void Count(const std::string& operation, const std::function<void()>& action,
               std::uint64_t atMost = kNoLimit) {
        const Counts before = board_.Kernel().calls.Made();
        action();
        Row row{operation, atMost, {}};
        for (const auto& [name, count] : board_.Kernel().calls.Made()) {
            const auto earlier = before.find(name);
            const std::uint64_t added = count - (earlier == before.end() ? 0 : earlier->second);
            if (added != 0 && EntersTheKernel(name)) {
                row.calls[name] = added;
            }
        }
        rows_.push_back(row);
    }

    void Print() const {
        std::cout << std::left << std::setw(36) << "system calls of" << std::right << std::setw(6)
                  << "calls" << std::setw(9) << "at most"
                  << "   of these\n";
        for (const Row& row : rows_) {
            std::cout << std::left << std::setw(36) << row.operation << std::right << std::setw(6)
                      << row.Total() << std::setw(9)
                      << (row.atMost == kNoLimit ? "" : std::to_string(row.atMost)) << "  ";
            for (const auto& [name, count] : row.calls) {
                std::cout << ' ' << name << ' ' << count;
            }
            std::cout << '\n';
        }
    }

    [[nodiscard]] bool WithinLimits() const {
        bool within = true;
        for (const Row& row : rows_) {
            if (row.TooMany()) {
                std::cerr << "bench: " << row.operation << " needs " << row.Total()
                          << " system calls, at most " << row.atMost << " are allowed\n";
                within = false;
            }
        }
        return within;
    }

  private:
    sim::SimulatedBoard& board_;
    std::vector<Row> rows_;
};

void CountLine(Bench& bench) {
    GpioPin pin(0, 0);
    pin.SetDirection(kPinOutput);
    bench.Count(
        "GPIO write", [&] { pin.Write(kLevelHigh); }, kGpioLimit);
    bench.Count(
        "GPIO read", [&] { static_cast<void>(pin.Read()); }, kGpioLimit);
}

void CountChannel(Bench& bench) {
    PwmChannel channel(0);
    const auto program = [&] { channel.SetFrequencyAndDuty(1000.0F, 30.0F); };
    bench.Count("PWM SetFrequencyAndDuty, stopped", program);
    bench.Count("PWM SetFrequencyAndDuty, running", program);
    bench.Count("PWM Enable", [&] { channel.Enable(false); });
    bench.Count("PWM IsEnabled", [&] { static_cast<void>(channel.IsEnabled()); });
}

void CountConverter(Bench& bench) {
    const SpiDevice device;
    std::array<std::uint16_t, 2> words = {0xA080, 0};
    bench.Count("SPI write", [&] { static_cast<void>(device.Write(words.data(), 2)); });
    bench.Count("SPI read", [&] { static_cast<void>(device.Read(words.data(), 4)); });
}

void CountLog(Bench& bench) {
    const auto logOneRecord = [] {
        DataLog log;
        log.open();
        log.write("a record\n");
        log.close();
    };
    bench.Count("log open, write, close, not mounted", logOneRecord);
    bench.Count("log open, write, close, mounted", logOneRecord);
}

// The first measurement, step by step; what it shows on the console is not wanted here.
void CountSteps(Bench& bench) {
    const std::ostringstream console;
    std::streambuf* const shown = std::cout.rdbuf(console.rdbuf());
    {
        MeasurementCycle cycle;
        cycle.Init();
        StateTable table;
        for (std::uint32_t step = 1; step <= table.Count(); ++step) {
            const std::string duration = std::to_string(table.Duration());
            bench.Count("step " + std::to_string(step) + ", " + duration + " ms",
                        [&] { RunCycleStep(&table, &cycle); });
        }
    }
    std::cout.rdbuf(shown);
}

} // namespace

} // namespace tavrelin

int main() {
    sim::SimulatedBoard board;
    tavrelin::Bench bench(board);
    tavrelin::CountLine(bench);
    tavrelin::CountChannel(bench);
    tavrelin::CountConverter(bench);
    tavrelin::CountLog(bench);
    tavrelin::CountSteps(bench);
    bench.Print();
    return bench.WithinLimits() ? 0 : 1;
}
