#include "tests/devices/sound/PlayConsole.h"

namespace tavrelin {

std::string PlayProgress(long written, unsigned left, unsigned frequency) {
    return "the return_code:loop are " + std::to_string(written) + ":" + std::to_string(left) +
           "\nthe frequency is " + std::to_string(frequency) + "\n";
}

std::string PlayReport(unsigned periodFrames, unsigned bufferFrames, unsigned periodTime,
                       unsigned periods) {
    std::string report = "period size = " + std::to_string(periodFrames) + " frames\n" +
                         "buffer size = " + std::to_string(bufferFrames) + " frames\n" +
                         "the size:val:loops are " + std::to_string(periodFrames * 4) + ":" +
                         std::to_string(periodTime) + ":" + std::to_string(periods) + "\n";
    for (unsigned done = 1; done <= periods; ++done) {
        report += PlayProgress(periodFrames, periods - done, 500 + 50 * done);
    }
    return report;
}

} // namespace tavrelin
