#include "log/Zone.h"

#include "base/NumberText.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace tavrelin::daylog {

namespace {

std::int64_t OffsetAt(std::int64_t utc) {
    const auto moment = static_cast<std::time_t>(utc);
    std::tm local{};
    localtime_r(&moment, &local);
    return local.tm_gmtoff;
}

/// The first bytes of a file, by which a zone is known among what lies beside it.
std::string Begin(const std::filesystem::path& path) {
    std::string begin(4, '\0');
    std::ifstream(path, std::ios::binary).read(begin.data(), 4);
    return begin;
}

/// Records of the two writers may be so many seconds out of their order.
constexpr std::int64_t kOutOfOrder = 60;

} // namespace

bool SetZone(const std::string& name) {
    std::error_code error;
    const auto file = std::filesystem::path("/usr/share/zoneinfo") / name;
    if (name.empty() || name.front() == '/' || name.find("..") != std::string::npos ||
        !std::filesystem::is_regular_file(file, error) || Begin(file) != "TZif") {
        return false;
    }
    setenv("TZ", name.c_str(), 1);
    tzset();
    return true;
}

std::string IsoText(const Moment& moment) {
    const auto minutes = static_cast<int>(std::abs(moment.offset) / 60);
    return IsoText(moment.utc + moment.offset) + (moment.offset < 0 ? "-" : "+") +
           ZeroPaddedText(minutes / 60, 2) + ":" + ZeroPaddedText(minutes % 60, 2);
}

void ZonedClock::LookAround(CivilSeconds day) {
    day_ = day;
    again_ = false;
    before_ = OffsetAt(day - kSecondsPerDay);
    after_ = OffsetAt(day + 2 * kSecondsPerDay);
}

Moment ZonedClock::At(CivilSeconds local) {
    if (local < day_ || local >= day_ + kSecondsPerDay || last_ == INT64_MIN) {
        LookAround(DayOf(local));
    }
    Moment moment{local - before_, before_, false};
    if (before_ != after_) {
        const Moment later{local - after_, after_, false};
        const bool early = OffsetAt(moment.utc) == before_;
        const bool late = OffsetAt(later.utc) == after_;
        moment.doubled = early && late;
        if (late && (!early || again_ || moment.utc + kOutOfOrder < last_)) {
            moment = {later.utc, later.offset, early};
            again_ = true;
        }
    }
    last_ = moment.utc;
    return moment;
}

} // namespace tavrelin::daylog
