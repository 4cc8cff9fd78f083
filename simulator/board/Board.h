#pragma once

#include "simulator/board/AnalogFrontEnd.h"
#include "simulator/board/CardSlot.h"
#include "simulator/board/Converter.h"
#include "simulator/board/Lines.h"
#include "simulator/board/Nanoseconds.h"
#include "simulator/board/Noise.h"
#include "simulator/board/Occasion.h"
#include "simulator/board/PumpShaft.h"
#include "simulator/board/PwmChip.h"
#include "simulator/board/RegisterPage.h"
#include "simulator/board/SampleCell.h"
#include "simulator/board/WallClock.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace sim {

/// Something that happens to the board from outside at a moment of board time.
struct WorldEvent {
    enum class Kind {
        RemoveCard,
        InsertCard,
        LockCard,
        UnlockCard,
        JumpClock,
        SetInput,
        SetNextSample,
        SetNoise,
        ShowFlag,
        CutPower
    };

    Nanoseconds at = 0;
    Kind kind = Kind::RemoveCard;
    std::int64_t value = 0; ///< JumpClock: seconds; SetInput: level; ShowFlag: 0 hides it
    unsigned line = 0;      ///< SetInput: kernel line number
    double number = 0.0;    ///< SetNextSample: absorbance; SetNoise: deviation in counts
    Occasion when{};        ///< if set, instead of at: somebody else knows
};

/// What the detector reads, in counts.
struct DetectorSetup {
    std::int32_t dark = 20'000;         ///< without light
    std::int32_t reference = 3'000'000; ///< with light through a clear sample
    double noise = 0.0;                 ///< standard deviation of a reading
};

/// The board at the start, and what befalls it.
struct BoardSetup {
    bool present = true; ///< false: no line, channel, converter or card slot at all
    std::vector<double> absorbances{0.25};
    DetectorSetup detector;
    std::vector<std::uint32_t> converterWords;
    PumpSetup pump;
    LinesSetup lines;
    ChannelsSetup channels;
    CardState card;
    AnalogState analog;
    std::vector<WorldEvent> events;
};

/// The instrument's board: lines and channels wired to pump, stirrer, valve, lamp, measuring cell
/// and converter, the card slot and the clock. Knows board time, nothing of files or threads.
class Board {
  public:
    Board(const BoardSetup& setup, std::uint64_t seed, std::int64_t startTime);
    Board(const Board&) = delete;
    Board& operator=(const Board&) = delete;
    ~Board() = default;

    /// Called for everything that happens by itself: what, and the data that goes with it.
    std::function<void(const std::string& what, const std::string& data)> onEvent;
    /// Called after lines and channels have acted on pump, stirrer, valve and lamp.
    std::function<void()> onOutputs;
    /// Called when the power goes.
    std::function<void()> onPowerCut;
    /// Called before time goes on to a moment until which nothing happens.
    std::function<void(Nanoseconds until)> onPass;

    Nanoseconds Now() const { return now_; }
    /// Lets time pass, with all that happens on the way in its order; a moment in the past changes
    /// nothing.
    void AdvanceTo(Nanoseconds moment);
    /// Has happen what is due at this very moment.
    void Settle();
    /// When something next happens by itself.
    Nanoseconds NextEvent() const;
    /// Has something happen at a moment of board time.
    void At(Nanoseconds moment, std::function<void()> action);
    /// Has an event of the world happen at its moment.
    void Plan(const WorldEvent& event);
    /// True when something is planned for this very moment.
    bool IsPlanned(Nanoseconds moment) const { return agenda_.contains(moment); }
    /// Pulls the card, which the kernel notices after a while.
    void PullCard();
    /// Standard deviation of the detector's readings, in counts.
    double DetectorNoise() const { return detector_.noise; }

    /// The shaft stands at a step of the turn, before it has turned at all.
    void PlaceShaft(std::int64_t step);
    /// The level of the home sensor's line follows the flag until it is held.
    void HoldHomeSensor(bool level);
    /// Seconds and nanoseconds of the clock on the wall, as one number of nanoseconds since 1970.
    Nanoseconds WallTime() const { return clock.At(now_); }

    const bool present;
    Lines lines;
    PwmChip pwm;
    Converter converter;
    CardSlot card;
    WallClock clock;
    RegisterPage registers{lines};
    PumpShaft shaft;
    SampleCell cell;
    AnalogFrontEnd analog;

    /// True while driver chip and pulses of the stirrer are on.
    bool Stirring() const;
    bool ValveOpen() const;
    /// Light of the lamp, 1.0 at its regular duty cycle.
    double Lamp() const;

  private:
    void Happen(const WorldEvent& event);
    void PassTo(Nanoseconds moment);
    void OutputsChanged();
    void FollowFlag();
    std::int32_t DetectorReading();

    Nanoseconds now_ = 0;
    std::multimap<Nanoseconds, std::function<void()>> agenda_;
    bool homeHeld_ = false;
    bool flagShown_;
    Noise noise_;
    DetectorSetup detector_;
};

} // namespace sim
