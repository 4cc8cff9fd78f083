#pragma once

#include "simulator/board/Board.h"

#include <string>

namespace sim {

/// What the kernel has been given for a card that is not mounted synchronously, and has not put on
/// it yet. The card's folder holds what programs see; while anything waits, a folder beside it
/// holds what is on the card.
class CardCache {
  public:
    /// How long something waits until the kernel puts it on the card, with all else that waits.
    static constexpr Nanoseconds kWrittenBackAfter = Seconds(30);

    /// folder: of the card's files on this machine.
    CardCache(const std::string& folder, Board& board);

    /// Something in the mounted card's folder is about to change.
    void BeforeChange();
    /// A file, by its path in the folder, is put on the card.
    void Save(const std::string& file) const;
    /// All that waits is put on the card, as the kernel does before it lets go of one that is well.
    void SaveAll();
    /// All that waits is lost.
    void Lose();

  private:
    std::string folder_;
    std::string onCard_;
    Board& board_;
    bool waiting_ = false;
    Nanoseconds since_ = 0; ///< the first change that waits
};

} // namespace sim
