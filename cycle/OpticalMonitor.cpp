#include "cycle/OpticalMonitor.h"

#include "base/LocalTime.h"
#include "base/NumberText.h"
#include "base/SaturatingCast.h"
#include "devices/Converter.h"
#include "storage/DataLog.h"

#include <ctime>

namespace tavrelin {

namespace {

// ms; a reading takes 250, so that a step of 1000 ends with its fourth.
constexpr float kMargin = 100.0F;

float MillisecondsSince(const timespec& start) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const double ofSeconds = static_cast<double>(now.tv_sec - start.tv_sec) * 1000.0;
    const double ofNanoseconds = static_cast<double>(now.tv_nsec - start.tv_nsec) / 1e6;
    return static_cast<float>(ofSeconds + ofNanoseconds);
}

// Minutes and seconds go without padding, on purpose: 9:05:03 reads 09:5:3.
std::string SampleLine(const std::tm& local, float reading, const std::string& description) {
    return DateText(local) + " " + ZeroPaddedText(local.tm_hour, 2) + ":" +
           std::to_string(local.tm_min) + ":" + std::to_string(local.tm_sec) + "," +
           RightAlignedText(std::to_string(SaturatingCast<std::int32_t>(reading)), 8) + "," +
           description + ",,\n";
}

bool AppendToLog(const std::string& date, const std::vector<std::string>& lines) {
    DataLog log(DayLogPath(date));
    if (!log.open()) {
        return false;
    }
    for (const std::string& line : lines) {
        log.write(line);
    }
    log.close();
    return true;
}

} // namespace

bool MonitorOptics(const StepRequest* request) {
    if (request == nullptr || request->externalAdc == nullptr) {
        return false;
    }
    timespec start{};
    ::clock_gettime(CLOCK_REALTIME, &start);
    std::vector<std::string> pending;
    // Without a log the readings go on, and so does the step: none is thrown away.
    for (bool logged = false; !logged;) {
        const float reading = doADCConversion(request->externalAdc);
        request->samples->push_back(reading);
        const std::tm local = LocalNow();
        pending.push_back(SampleLine(local, reading, request->state.Description));
        const bool stepIsOver =
            static_cast<float>(request->state.Duration) < MillisecondsSince(start) + kMargin;
        // The date of the reading's own line, also when midnight passes before the log is opened.
        logged = stepIsOver && AppendToLog(DateText(local), pending);
    }
    return true;
}

} // namespace tavrelin
