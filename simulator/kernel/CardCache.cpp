#include "simulator/kernel/CardCache.h"

#include <filesystem>

namespace sim {

namespace fs = std::filesystem;

CardCache::CardCache(const std::string& folder, Board& board)
    : folder_(folder), onCard_(folder + "-as-it-is"), board_(board) {
    fs::remove_all(onCard_); // of a run that was killed
}

void CardCache::BeforeChange() {
    const CardSlot& card = board_.card;
    if (card.synchronous || !card.Healthy() || waiting_) {
        return;
    }
    fs::copy(folder_, onCard_, fs::copy_options::recursive);
    waiting_ = true;
    since_ = board_.Now();
    board_.At(since_ + kWrittenBackAfter, [this, since = since_] {
        if (since == since_ && board_.card.Healthy()) {
            SaveAll();
        }
    });
}

void CardCache::Save(const std::string& file) const {
    if (waiting_ && fs::is_regular_file(file)) {
        const fs::path place = onCard_ + file.substr(folder_.size());
        fs::create_directories(place.parent_path());
        fs::copy_file(file, place, fs::copy_options::overwrite_existing);
    }
}

void CardCache::SaveAll() {
    fs::remove_all(onCard_);
    waiting_ = false;
}

void CardCache::Lose() {
    if (waiting_) {
        fs::remove_all(folder_);
        fs::rename(onCard_, folder_);
        waiting_ = false;
    }
}

} // namespace sim
