#include "simulator/live/LiveFeed.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace sim {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto kLookEvery = 50ms;
constexpr std::size_t kFramesKept = 40; // two seconds
constexpr std::size_t kReadingsInAFrame = 400;
constexpr std::size_t kReadingsKept = 1200;
constexpr std::size_t kResultsKept = 256;
constexpr std::size_t kConsoleKept = 16'384;
constexpr std::size_t kLogShown = 4'096;
constexpr std::size_t kDoneKept = 100;

std::string Pair(const LiveFigure& figure) {
    char text[64];
    const char* form = std::isfinite(figure.value) ? "[%.12g,%.9g]" : "[%.12g,null]";
    std::snprintf(text, sizeof text, form, figure.seconds, figure.value);
    return text;
}

template <typename Items, typename Show>
std::string List(const Items& items, Show show) {
    std::string text;
    for (const auto& item : items) {
        text += (text.empty() ? "" : ",") + show(item);
    }
    return "[" + text + "]";
}

std::string Same(const std::string& text) {
    return text;
}

template <typename Items>
void KeepLast(Items& items, std::size_t most) {
    items.erase(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(
                                                   items.size() - std::min(items.size(), most)));
}

std::string Tail(const fs::path& path, std::uint64_t bytes) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(bytes - std::min<std::uint64_t>(bytes, kLogShown)));
    std::string text(kLogShown, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

} // namespace

std::string JsonText(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

LiveFeed::LiveFeed(LiveLink& link, std::string cardFolder)
    : link_(link), cardFolder_(std::move(cardFolder)) {}

void LiveFeed::Stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    changed_.notify_all();
}

LiveFeed::~LiveFeed() {
    Stop();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void LiveFeed::Start() {
    thread_ = std::thread([this] { Run(); });
}

void LiveFeed::Run() {
    std::unique_lock lock(mutex_);
    while (!stopped_) {
        Look();
        lock.unlock();
        std::this_thread::sleep_for(kLookEvery);
        lock.lock();
    }
}

void LiveFeed::Tell(double seconds, const std::string& command) {
    const std::lock_guard lock(mutex_);
    char time[32];
    std::snprintf(time, sizeof time, "%.6f", seconds);
    done_.push_back("[" + std::string(time) + "," + command + "]");
    KeepLast(done_, kDoneKept);
    Add("done", done_.back());
}

void LiveFeed::End(const std::string& reason) {
    const std::lock_guard lock(mutex_);
    reason_ = reason;
    ended_ = true;
    Look();
    Add("end", "{\"reason\":" + JsonText(reason) + "}");
    Look();
}

void LiveFeed::Look() {
    Figures readings;
    link_.readings.TakeSince(seenReadings_, kReadingsInAFrame, readings);
    Figures results;
    link_.results.TakeSince(seenResults_, kResultsKept, results);
    std::string console;
    link_.console.TakeSince(seenConsole_, kConsoleKept, console);
    if (!readings.empty()) {
        Add("reading", List(readings, Pair));
    }
    for (const LiveFigure& result : results) {
        Add("result", Pair(result));
    }
    if (!console.empty()) {
        Add("console", JsonText(console));
    }
    readings_.insert(readings_.end(), readings.begin(), readings.end());
    KeepLast(readings_, kReadingsKept);
    results_.insert(results_.end(), results.begin(), results.end());
    KeepLast(results_, kResultsKept);
    console_ += console;
    KeepLast(console_, kConsoleKept);
    LookAtCard();
    LookAtState();
    if (!frame_.empty()) {
        frames_.push_back(std::exchange(frame_, {}));
        KeepLast(frames_, kFramesKept);
        ++last_;
        changed_.notify_all();
    }
}

/// The run writes a state only when asked, and once more at its end.
void LiveFeed::LookAtState() {
    const std::uint32_t before = link_.published.load(std::memory_order_acquire);
    if (before != published_ && before % 2 == 0) {
        std::string text(link_.state.data());
        std::atomic_thread_fence(std::memory_order_acquire);
        if (link_.published.load(std::memory_order_relaxed) == before) {
            published_ = before;
            state_ = std::move(text);
        }
    }
    if (std::string state = State(); !state_.empty() && state != shown_) {
        shown_ = std::move(state);
        Add("state", "{" + shown_ + "}");
    }
    link_.news.fetch_or(LiveLink::kState, std::memory_order_release);
}

/// The file of the day is the one that was written to last.
void LiveFeed::LookAtCard() {
    std::error_code error;
    fs::path newest;
    fs::file_time_type newestTime;
    for (fs::directory_iterator at(cardFolder_, error); !error && at != fs::directory_iterator();
         at.increment(error)) {
        const auto time = at->last_write_time(error);
        if (!error && at->is_regular_file(error) && (newest.empty() || time >= newestTime)) {
            newest = at->path();
            newestTime = time;
        }
    }
    const std::uint64_t bytes = newest.empty() ? 0 : fs::file_size(newest, error);
    if (error || (newest.filename() == file_ && bytes == bytes_)) {
        return;
    }
    file_ = newest.filename();
    bytes_ = bytes;
    log_ = newest.empty() ? "" : Tail(newest, bytes);
    Add("log", JsonText(log_));
}

void LiveFeed::Add(const char* event, const std::string& data) {
    frame_ += "event: " + std::string(event) + "\ndata: " + data + "\n\n";
}

/// The run's members end with the card's, which this machine knows more about.
std::string LiveFeed::State() const {
    if (state_.empty()) {
        return {};
    }
    return state_.substr(0, state_.size() - 1) + ",\"file\":" + JsonText(file_) +
           ",\"bytes\":" + std::to_string(bytes_) + "},\"ended\":" + JsonText(reason_);
}

std::string LiveFeed::Whole() const {
    const std::string state = shown_.empty() ? "\"ended\":" + JsonText(reason_) : shown_;
    return "{" + state + ",\"readings\":" + List(readings_, Pair) +
           ",\"results\":" + List(results_, Pair) + ",\"console\":" + JsonText(console_) +
           ",\"log\":" + JsonText(log_) + ",\"done\":" + List(done_, Same) + "}";
}

std::string LiveFeed::All() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, 2s, [&] { return stopped_ || ended_ || !shown_.empty(); });
    return Whole();
}

std::string LiveFeed::Next(std::uint64_t& seen) {
    std::unique_lock lock(mutex_);
    // Before the run has told its first state there is nothing that a page could draw.
    changed_.wait_for(lock, 1s, [&] { return stopped_ || (!shown_.empty() && last_ != seen); });
    if (stopped_) {
        return {};
    }
    if (shown_.empty() || last_ == seen) {
        return ":\n\n";
    }
    const std::uint64_t behind = last_ - std::exchange(seen, last_);
    if (behind == last_ || behind > frames_.size()) {
        std::string text = "event: all\ndata: " + Whole() + "\n\n";
        return ended_ ? text + "event: end\ndata: {\"reason\":" + JsonText(reason_) + "}\n\n"
                      : text;
    }
    std::string text;
    for (auto frame = frames_.end() - static_cast<std::ptrdiff_t>(behind); frame != frames_.end();
         ++frame) {
        text += *frame;
    }
    return text;
}

} // namespace sim
