#include "service/BufferedLog.h"

#include "base/LocalTime.h"
#include "storage/CardAccess.h"
#include "storage/DataLog.h"

#include <vector>

namespace tavrelin {

namespace {

constexpr std::size_t kLongestMessage = 29;
constexpr std::size_t kBatch = 240;

std::vector<std::string>& Pending() {
    static std::vector<std::string> messages;
    return messages;
}

void WriteOut(std::vector<std::string>& messages) {
    // The day of the last message counts, also for those that came before midnight.
    DataLog log(DayLogPath(DateText()));
    log.open();
    for (const std::string& message : messages) {
        log.write(message);
    }
    messages.clear(); // whether or not the log took them: the list must not grow
    log.close();
}

} // namespace

bool BufferedLogWrite(const std::string& message) {
    if (message.size() > kLongestMessage || !IsCardMounted()) {
        return false;
    }
    Pending().push_back(message);
    if (Pending().size() >= kBatch) {
        WriteOut(Pending());
    }
    return true;
}

std::size_t BufferedLogPending() {
    return Pending().size();
}

} // namespace tavrelin
