#include "tests/devices/sound/PlayConsole.h"

namespace tavrelin {

std::string PlayHeading(unsigned periodFrames, unsigned bufferFrames, unsigned periodTime,
                        unsigned periods) {
    return "period size = " + std::to_string(periodFrames) + " frames\n" +
           "buffer size = " + std::to_string(bufferFrames) + " frames\n" +
           "the size:val:loops are " + std::to_string(periodFrames * 4) + ":" +
           std::to_string(periodTime) + ":" + std::to_string(periods) + "\n";
}

std::string PlayProgress(long written, unsigned left, unsigned frequency) {
    return "the return_code:loop are " + std::to_string(written) + ":" + std::to_string(left) +
           "\n" + "the frequency is " + std::to_string(frequency) + "\n";
}

std::string WholeProgress(unsigned periodFrames, unsigned periods) {
    std::string lines;
    for (unsigned done = 1; done <= periods; ++done) {
        lines += PlayProgress(periodFrames, periods - done, 500 + 50 * done);
    }
    return lines;
}

} // namespace tavrelin
