#include "base/LocalTime.h"

#include "base/NumberText.h"

namespace tavrelin {

std::tm LocalNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::tzset(); // localtime_r alone looks at the zone once in a process that runs for days
    ::localtime_r(&now, &local);
    return local;
}

std::string DateText(const std::tm& local) {
    constexpr int epochOfYears = 1900;
    return ZeroPaddedText(local.tm_year + epochOfYears, 4) + "-" +
           ZeroPaddedText(local.tm_mon + 1, 2) + "-" + ZeroPaddedText(local.tm_mday, 2);
}

std::string DateText() {
    return DateText(LocalNow());
}

std::string TimestampText() {
    const std::tm local = LocalNow();
    return DateText(local) + " " + ZeroPaddedText(local.tm_hour, 2) + ":" +
           ZeroPaddedText(local.tm_min, 2) + "." + ZeroPaddedText(local.tm_sec, 2);
}

} // namespace tavrelin
