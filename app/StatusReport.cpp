#include "app/StatusReport.h"

#include "app/Version.h"
#include "base/Console.h"
#include "base/LocalTime.h"
#include "base/NumberText.h"
#include "storage/CardAccess.h"

namespace tavrelin {

void ReportStatus(float value, const std::string& message) {
    std::string line = "TAVRELIN,";
    // The version ends in a newline, which breaks every status line there: consumers expect it.
    line += TimestampText() + ",";
    line += FixedText(static_cast<double>(value)) + ",";
    line += IsCardMounted() ? "1," : "0,";
    line += Version::VersionString() + ",";
    PrintLineAndFlush(line + message);
}

} // namespace tavrelin
